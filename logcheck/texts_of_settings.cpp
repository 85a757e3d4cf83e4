// The texts of the run's header, the settings file and the product's registry values.
#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "log/log_texts.h"
#include "logcheck/texts.h"
#include "settings/registered_texts.h"
#include "settings/settings_texts.h"
#include "text/text.h"
#include "update/update_texts.h"
#include "version.h"

namespace logcheck {
namespace {

using enum Role;

constexpr std::string_view kInstallAgain =
    "install " TAVREL_PRODUCT_LABEL " again, which writes its registry values anew";

constexpr Text kHeader[] = {
    {.text = log_texts::kHeaderRule, .role = header, .means = "frames the header of a run"},
    {.text = log_texts::kFileVersion, .open_ended = true, .role = header, .means = "version of the utility"},
    {.text = log_texts::kDateTime,
     .open_ended = true,
     .role = header,
     .means = "local time at which the run began"},
    {.text = log_texts::kBuildVersion.substr(
         0, log_texts::kBuildVersion.size() - log_texts::kNotAvailable.size()),
     .open_ended = true,
     .role = header,
     .means =
         "file version of the product's " TAVREL_IMAGE "; `NA` or nothing: the first check did not read it"},
    {.text = log_texts::kAppMode,
     .open_ended = true,
     .role = header,
     .means = "`Admin`: the run had an administrator's rights; `User`: it had not"},
    {.text = log_texts::kInvokedByProduct,
     .role = header,
     .means = "the product started the utility, which made the start-up check"},
    {.text = log_texts::kInvokedByUser,
     .role = header,
     .means = "a user started the utility, which made the interactive check"},
};

constexpr Text kSettings[] = {
    {.text = settings_texts::kFileExists, .means = "the user has a settings file korsa.ini"},
    {.text = settings_texts::kFolderCreated,
     .means = "the folder " TAVREL_FOLDER
              " for the settings in the user's Documents folder was missing and was made"},
    {.text = settings_texts::kCopied,
     .means =
         "the user's settings file was made from the korsa.ini beside the program, by this run or by another "
         "one at the same moment"},
    {.text = settings_texts::kFolderPathEmpty,
     .role = trouble,
     .means =
         "Windows names no Documents folder for this user, or its path is too long, so the built-in settings "
         "are used",
     .advice = "repair the user's Documents folder; a redirected folder must be reachable"},
    {.text = settings_texts::kSourceNotFound,
     .role = trouble,
     .means =
         "the user has no korsa.ini, and there is none beside the program to copy, so the built-in settings "
         "are used",
     .advice =
         "put korsa.ini beside QRTTavrelUtility.exe, or install the utility again; then delete the user's "
         "own korsa.ini if this run has made one, because an existing file is never replaced"},
    {.text = settings_texts::kCopyFailed,
     .role = trouble,
     .means = "the korsa.ini beside the program could not be copied for the user, so the built-in settings "
              "are used",
     .advice =
         "see that the user may read that file, which has at most 1 MiB, and may write to the folder of the "
         "settings; where Controlled Folder Access is on, allow QRTTavrelUtility.exe; then delete the "
         "user's own korsa.ini if this run has made one, because an existing file is never replaced"},
    {.text = settings_texts::kValidationFailed,
     .means = "this run found no settings file and uses the built-in settings; the entry above tells why"},
};

constexpr Text kBeforeValues[] = {
    {.text = update_texts::kRetry, .means = "a further check in the same window: the user pressed Retry"},
    {.text = update_texts::kEntriesStart,
     .means = "a check begins: the registry values of the product are read"},
    {.text = registered_texts::kModeOne,
     .means = "the product is looked for under SOFTWARE\\Wow6432Node (64-bit Windows)"},
    {.text = registered_texts::kModeTwo,
     .means = "the product is looked for directly under SOFTWARE (32-bit Windows, or found there only)"},
    {.text = registered_texts::kModeFailed,
     .role = trouble,
     .means =
         "SOFTWARE\\Wow6432Node could not be opened, so the product is looked for directly under SOFTWARE",
     .advice = "check the rights on HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node"},
};

constexpr Text kAfterValues[] = {
    {.text = update_texts::kVersionNotFound,
     .role = not_installed,
     .means =
         "the registry value Version of the product was not read or is not exactly \"" TAVREL_PRODUCT_VERSION
         "\", so no server was asked",
     .advice = "install " TAVREL_PRODUCT_LABEL " again if it is to be on this computer"},
    {.text = update_texts::kEntriesEnd, .means = "the registry values of the product have been read"},
    {.text = update_texts::kUpdatesStart, .means = "the check of what the server offers begins"},
    {.text = update_texts::kEntriesNotFound,
     .role = facts_missing,
     .means = "DisplayVersion, DisplayIcon or Installpath of the product is missing, so no server was asked",
     .advice = kInstallAgain},
};

/// What each text of a reader says about its value.
struct ReaderText {
  std::wstring_view RegisteredReader::*text;
  Role role;
  std::string_view says;
};

constexpr ReaderText kReaderTexts[] = {
    {&RegisteredReader::completed, value_read, " was read"},
    {&RegisteredReader::open_failed, value_missing, " could not be read: the key could not be opened"},
    {&RegisteredReader::empty, value_missing, " is empty"},
    {&RegisteredReader::query_failed, value_missing, " could not be read"},
    {&RegisteredReader::query_missing, value_missing, " does not exist"},
    {&RegisteredReader::alternative_completed, value_read, " directly under SOFTWARE was read"},
    {&RegisteredReader::alternative_open_failed, value_missing,
     " directly under SOFTWARE could not be read either: the key could not be opened"},
    {&RegisteredReader::alternative_query_failed, value_missing,
     " directly under SOFTWARE could not be read either"},
    {&RegisteredReader::alternative_empty, value_missing, " directly under SOFTWARE is empty"},
};

/// The texts of all readers. A reader can have one text for two cases: then the first one counts.
std::vector<Text> ValueTexts() {
  static std::deque<std::string> meanings;
  std::vector<Text> texts;
  for (const RegisteredReader* reader : registered_texts::kReaders) {
    for (const ReaderText& each : kReaderTexts) {
      const std::wstring_view text = reader->*each.text;
      const bool known = std::any_of(texts.begin(), texts.end(), [&](const Text& other) {
        return text::Trim(other.text) == text::Trim(text);
      });
      if (text.empty() || known) continue;
      std::string& means = meanings.emplace_back();
      for (const wchar_t c : std::wstring_view(reader->value)) means += static_cast<char>(c);
      means.append(reader->maker_key ? " of the maker's key" : " of the product's uninstall entry");
      means.append(each.says);
      const bool missing = each.role == value_missing;
      texts.push_back({.text = text,
                       .role = each.role,
                       .reader = reader,
                       .means = means,
                       .advice = missing ? kInstallAgain : std::string_view()});
    }
  }
  return texts;
}

}  // namespace

std::span<const Text> HeaderTexts() {
  return kHeader;
}

std::span<const Text> SettingsTexts() {
  return kSettings;
}

std::span<const Text> RegisteredTexts() {
  static const std::vector<Text> all = [] {
    std::vector<Text> texts(std::begin(kBeforeValues), std::end(kBeforeValues));
    for (const Text& text : ValueTexts()) texts.push_back(text);
    texts.insert(texts.end(), std::begin(kAfterValues), std::end(kAfterValues));
    return texts;
  }();
  return all;
}

}  // namespace logcheck
