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
    WithRole(header, log_texts::kHeaderRule, "frames the header of a run"),
    OpenEnded(WithRole(header, log_texts::kFileVersion, "version of the utility")),
    OpenEnded(WithRole(header, log_texts::kDateTime, "local time at which the run began")),
    OpenEnded(WithRole(
        header,
        log_texts::kBuildVersion.substr(0, log_texts::kBuildVersion.size() - log_texts::kNotAvailable.size()),
        "file version of the product's " TAVREL_IMAGE "; `NA` or nothing: the first check did not read it")),
    OpenEnded(WithRole(header, log_texts::kAppMode,
                       "`Admin`: the run had an administrator's rights; `User`: it had not")),
    WithRole(header, log_texts::kInvokedByProduct,
             "the product started the utility, which made the start-up check"),
    WithRole(header, log_texts::kInvokedByUser,
             "a user started the utility, which made the interactive check"),
};

constexpr Text kSettings[] = {
    Step(settings_texts::kFileExists, "the user has a settings file korsa.ini"),
    Step(settings_texts::kFolderCreated,
         "the folder " TAVREL_FOLDER
         " for the settings in the user's Documents folder was missing and was made"),
    Step(settings_texts::kCopied,
         "the user's settings file was made from the korsa.ini beside the program, by this run or by another "
         "one at the same moment"),
    Trouble(settings_texts::kFolderPathEmpty,
            "Windows names no Documents folder for this user, or its path is too long, so the built-in "
            "settings are used",
            "repair the user's Documents folder; a redirected folder must be reachable"),
    Trouble(settings_texts::kSourceNotFound,
            "the user has no korsa.ini, and there is none beside the program to copy, so the built-in "
            "settings are used",
            "put korsa.ini beside QRTTavrelUtility.exe, or install the utility again; then delete the user's "
            "own korsa.ini if this run has made one, because an existing file is never replaced"),
    Trouble(settings_texts::kCopyFailed,
            "the korsa.ini beside the program could not be copied for the user, so the built-in settings are "
            "used",
            "see that the user may read that file, which has at most 1 MiB, and may write to the folder of "
            "the settings; where Controlled Folder Access is on, allow QRTTavrelUtility.exe; then delete the "
            "user's own korsa.ini if this run has made one, because an existing file is never replaced"),
    Step(settings_texts::kValidationFailed,
         "this run found no settings file and uses the built-in settings; the entry above tells why"),
};

constexpr Text kBeforeValues[] = {
    Step(update_texts::kRetry, "a further check in the same window: the user pressed Retry"),
    Step(update_texts::kEntriesStart, "a check begins: the registry values of the product are read"),
    Step(registered_texts::kModeOne,
         "the product is looked for under SOFTWARE\\Wow6432Node (64-bit Windows)"),
    Step(registered_texts::kModeTwo,
         "the product is looked for directly under SOFTWARE (32-bit Windows, or found there only)"),
    Trouble(registered_texts::kModeFailed,
            "SOFTWARE\\Wow6432Node could not be opened, so the product is looked for directly under SOFTWARE",
            "check the rights on HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node"),
};

constexpr Text kAfterValues[] = {
    WithRole(
        not_installed, update_texts::kVersionNotFound,
        "the registry value Version of the product was not read or is not exactly \"" TAVREL_PRODUCT_VERSION
        "\", so no server was asked",
        "install " TAVREL_PRODUCT_LABEL " again if it is to be on this computer"),
    Step(update_texts::kEntriesEnd, "the registry values of the product have been read"),
    Step(update_texts::kUpdatesStart, "the check of what the server offers begins"),
    WithRole(facts_missing, update_texts::kEntriesNotFound,
             "DisplayVersion, DisplayIcon or Installpath of the product is missing, so no server was asked",
             kInstallAgain),
};

using TextField = std::wstring_view RegisteredReader::*;

/// What each text of a reader says about its value.
struct ReaderText {
  TextField text;
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

/// The texts about the registry. A reader can have one text for two cases: then the first one counts.
std::vector<Text> RegisteredTexts() {
  static std::deque<std::string> meanings;
  std::vector<Text> texts(std::begin(kBeforeValues), std::end(kBeforeValues));
  for (const RegisteredReader* reader : registered_texts::kReaders) {
    for (const auto& [member, role, says] : kReaderTexts) {
      const std::wstring_view text = reader->*member;
      const bool known = std::any_of(texts.begin(), texts.end(), [&](const Text& other) {
        return text::Trim(other.text) == text::Trim(text);
      });
      if (text.empty() || known) continue;
      std::string& means = meanings.emplace_back();
      for (const wchar_t c : std::wstring_view(reader->value)) means += static_cast<char>(c);
      means.append(reader->maker_key ? " of the maker's key" : " of the product's uninstall entry")
          .append(says);
      texts.push_back(
          WithRole(role, text, means, role == value_missing ? kInstallAgain : std::string_view()));
      texts.back().reader = reader;
    }
  }
  texts.insert(texts.end(), std::begin(kAfterValues), std::end(kAfterValues));
  return texts;
}

}  // namespace

std::vector<TextGroup> GroupsBeforeExchange() {
  static const std::vector<Text> registered = RegisteredTexts();
  return {{.title = "Header of a run", .texts = kHeader},
          {.title = "Settings file (korsa.ini)", .texts = kSettings},
          {.title = "Registry values of the product", .texts = registered}};
}

}  // namespace logcheck
