#pragma once

#include <span>
#include <string>
#include <string_view>

#include "log/log_texts.h"

struct RegisteredReader;

/// The meaning of each text in the utility's log. The table contains the constants that the utility logs.
namespace logcheck {

/// The meaning of an entry for the verdict on its check.
enum class Role {
  header,         ///< part of the run's header; never an entry
  progress,       ///< a step that went well, or a frame line
  code,           ///< code or message without the entry that it belongs to
  trouble,        ///< an error after which the check continued
  value_read,     ///< a registry value of the product was read
  value_missing,  ///< a registry value of the product was not read
  not_installed,
  facts_missing,
  mismatch,
  exchange_failed,
  odd_status,  ///< the server answered with an HTTP status that is neither 200 nor 404
  not_offered,
  offered,
  launch_failed,
};

struct Text {
  std::wstring_view text;  ///< may hold line ends; compared without the white space around each line
  Role role = Role::progress;
  std::string_view means;  ///< a clause: lower case at the start, no full stop
  /// What to do, as a clause. Empty: nothing, or see the advice for the code that follows. A value that is
  /// missing with another code than 2 also has that code's advice.
  std::string_view advice = {};
  const RegisteredReader* reader = nullptr;  ///< of the value that was read or is missing
  bool open_ended = false;                   ///< a code, message or path follows
};

/// Texts of one step of a run, in the order in which a run logs them.
struct TextGroup {
  std::string_view title;
  std::span<const Text> texts;
};

/// All of them.
std::span<const TextGroup> TextGroups();

/// A constant of the utility, all of which are ASCII, without the blanks around it.
std::string Narrow(std::wstring_view constant);

/// What stands before the product's version in a header.
inline constexpr std::wstring_view kBuildVersionLabel =
    log_texts::kBuildVersion.substr(0, log_texts::kBuildVersion.size() - log_texts::kNotAvailable.size());

/// A code or message after "Error : ", or an HTTP status.
struct Code {
  std::string_view code;
  std::string_view means;  ///< clauses, as in Text
  std::string_view advice;
};

/// The HTTP statuses that are known; otherwise Windows' error codes.
std::span<const Code> Codes(bool http);
/// The entry for `code`; for a code that is not among Codes, an entry that says where to look it up.
Code FindCode(std::string_view code, bool http);

}  // namespace logcheck
