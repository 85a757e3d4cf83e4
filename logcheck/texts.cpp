// The meaning of each text that the utility logs.
#include <deque>
#include <set>
#include <string>
#include <vector>

#include "log/log_texts.h"
#include "logcheck/texts.h"
#include "settings/registered_texts.h"
#include "settings/settings_texts.h"
#include "text/text.h"
#include "ui/ui_texts.h"
#include "update/update_texts.h"
#include "version.h"

namespace logcheck {
namespace {

using enum Role;
using namespace log_texts;
using namespace registered_texts;
using namespace settings_texts;
using namespace ui_texts;
using namespace update_texts;

constexpr Text OpenEnded(Text text) {
  text.open_ended = true;
  return text;
}

constexpr std::string_view kInstallAgain =
    "install " TAVREL_PRODUCT_LABEL " again, which writes its registry values anew";

constexpr Text kHeader[] = {
    {kHeaderRule, header, "frames the header of a run"},
    OpenEnded({kFileVersion, header, "version of the utility"}),
    OpenEnded({kDateTime, header, "local time at which the run began"}),
    OpenEnded({kBuildVersionLabel, header,
               "file version of the product's " TAVREL_IMAGE
               "; `NA` or nothing: the first check did not read it"}),
    OpenEnded({kAppMode, header, "`Admin`: the run had an administrator's rights; `User`: it had not"}),
    {kInvokedByProduct, header, "the product started the utility, which made the start-up check"},
    {kInvokedByUser, header, "a user started the utility, which made the interactive check"},
};

constexpr Text kSettings[] = {
    {kFileExists, progress, "the user has a settings file korsa.ini"},
    {kFolderCreated, progress,
     "the folder " TAVREL_FOLDER " for the settings in the user's Documents folder was missing and was made"},
    {kCopied, progress,
     "the user's settings file was made from the korsa.ini beside the program, by this run or by another one "
     "at the same moment"},
    {kFolderPathEmpty, trouble,
     "Windows names no Documents folder for this user, or its path is too long, so the built-in settings are "
     "used",
     "repair the user's Documents folder; a redirected folder must be reachable"},
    {kSourceNotFound, trouble,
     "the user has no korsa.ini, and there is none beside the program to copy, so the built-in settings are "
     "used",
     "put korsa.ini beside QRTTavrelUtility.exe, or install the utility again; then delete the user's own "
     "korsa.ini if this run has made one, because an existing file is never replaced"},
    {kCopyFailed, trouble,
     "the korsa.ini beside the program could not be copied for the user, so the built-in settings are used",
     "see that the user may read that file, which has at most 1 MiB, and may write to the folder of the "
     "settings; where Controlled Folder Access is on, allow QRTTavrelUtility.exe; then delete the user's own "
     "korsa.ini if this run has made one, because an existing file is never replaced"},
    {kValidationFailed, progress,
     "this run found no settings file and uses the built-in settings; the entry above tells why"},
};

constexpr Text kBeforeValues[] = {
    {kRetry, progress, "a further check in the same window: the user pressed Retry"},
    {kEntriesStart, progress, "a check begins: the registry values of the product are read"},
    {kModeOne, progress, "the product is looked for under SOFTWARE\\Wow6432Node (64-bit Windows)"},
    {kModeTwo, progress,
     "the product is looked for directly under SOFTWARE (32-bit Windows, or found there only)"},
    {kModeFailed, trouble,
     "SOFTWARE\\Wow6432Node could not be opened, so the product is looked for directly under SOFTWARE",
     "check the rights on HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node"},
};

constexpr Text kAfterValues[] = {
    {kVersionNotFound, not_installed,
     "the registry value Version of the product was not read or is not exactly \"" TAVREL_PRODUCT_VERSION
     "\", so no server was asked",
     "install " TAVREL_PRODUCT_LABEL " again if it is to be on this computer"},
    {kEntriesEnd, progress, "the registry values of the product have been read"},
    {kUpdatesStart, progress, "the check of what the server offers begins"},
    {kEntriesNotFound, facts_missing,
     "DisplayVersion, DisplayIcon or Installpath of the product is missing, so no server was asked",
     kInstallAgain},
};

using TextField = std::wstring_view RegisteredReader::*;

/// What each text of a reader says about its value.
constexpr struct {
  TextField text;
  Role role;
  std::string_view says;
} kReaderTexts[] = {
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
  std::set<std::wstring_view> known{L""};
  std::vector<Text> texts(std::begin(kBeforeValues), std::end(kBeforeValues));
  for (const RegisteredReader* reader : kReaders) {
    const char* key = reader->maker_key ? " of the maker's key" : " of the product's uninstall entry";
    for (const auto& [member, role, says] : kReaderTexts) {
      const std::wstring_view text = reader->*member;
      if (!known.insert(text::Trim(text)).second) continue;
      const std::string& means = meanings.emplace_back((Narrow(reader->value) + key).append(says));
      texts.push_back({text, role, means, role == value_missing ? kInstallAgain : "", reader});
    }
  }
  texts.insert(texts.end(), std::begin(kAfterValues), std::end(kAfterValues));
  return texts;
}

constexpr std::string_view kCheckTemp =
    "check that the user's %TEMP% exists, may be written to and has space, and that no other program, such "
    "as a virus scanner, holds updates.ini in it";
constexpr std::string_view kAhead =
    "the record installedupdates.dat named a pack above the version that was read from " TAVREL_IMAGE
    ", and was deleted";
constexpr std::string_view kCheckVersion =
    "see that " TAVREL_IMAGE
    " is in the folder Installpath and can be read at any time: a version that is not read counts as 0";
constexpr std::string_view kRemoveRecord =
    "compare it with the version of " TAVREL_IMAGE
    " in the folder Installpath: delete the record as an administrator only if its pack is newer; otherwise "
    "that version was not read and counted as 0: make the file readable there";

constexpr Text kExchange[] = {
    {kHostMatched, progress, "the update host of the settings occurs in the product's URLUpdateInfo"},
    {kHostNotMatched, progress,
     "the update host of the settings does not occur, letter for letter, in the product's URLUpdateInfo",
     "correct UPDATE_LOC in the user's korsa.ini, or empty it; if it is empty, the built-in host is used, "
     "and URLUpdateInfo must name that host: install " TAVREL_PRODUCT_LABEL " again, or tell the publisher"},
    {kUrlMode, progress, "UPDATE_LOC_URL is set in the user's korsa.ini, which switches the check off",
     "remove UPDATE_LOC_URL from korsa.ini and start the utility again"},
    {kInvalidTagThree, mismatch,
     "settings and URLUpdateInfo give no address of a list, so no server was asked",
     "check that URLUpdateInfo holds the update host, a slash and the path of the list"},
    {kProbeFailed, exchange_failed,
     "the public address that is tried before the update host could not be reached",
     "check the network, and that the firewall lets QRTTavrelUtility.exe reach the probe address "
     "(administrator's guide, Network); no check works through a proxy"},
    {kOpenFailed, exchange_failed, "Windows could not prepare its internet functions"},
    {kOptionStatus, trouble,
     "the waiting time TIMEOUT could not be set for the session, so that of Windows can apply",
     "do nothing unless checks take too long"},
    {kConnectFailed, exchange_failed, "the connection to the update host could not be prepared"},
    {kOpenRequestFailed, exchange_failed, "the request for the list could not be prepared"},
    {kSendRequestFailed, exchange_failed, "the request to the update host failed"},
    {kFound, progress, "the server answered with status 200"},
    {kNotFound, exchange_failed, "the server did not send the list"},
    {kStatusCode, odd_status,
     "the server answered with an unexpected status, and what it sent was read as a list all the same"},
    {kStatusFailed, exchange_failed, "the status of the server's answer could not be read"},
    {kFileFailed, exchange_failed, "the file updates.ini could not be made in the user's temporary folder",
     kCheckTemp},
    {kFileReadFailed, exchange_failed,
     "the list could not be received to its end, or updates.ini could not be opened to read it"},
    {kFileWriteFailed, exchange_failed,
     "the list could not be written to updates.ini in the user's temporary folder", kCheckTemp},
    OpenEnded({kErrorPrefix, code, "code or message of the failure above it; see the list of codes"}),
    {kMismatch, code,
     "message in place of a code: settings and URLUpdateInfo do not fit together, so no server was asked",
     "look at the entries above it"},
    {kCompleted, progress, "what the server sent is in updates.ini"},
    {kCopiedMissing, exchange_failed,
     "the file updates.ini was gone from the user's temporary folder before it was read",
     "find the program that removes files from %TEMP%, such as a virus scanner, and check again"},
};

constexpr Text kComparison[] = {
    {kRecordMissing, progress,
     "the list names no pack, or was not fetched; there is no installedupdates.dat either"},
    {kRecordFound, progress,
     "the record installedupdates.dat is in the folder of DisplayIcon (start-up check)"},
    {kRecordFoundInteractive, progress,
     "the record installedupdates.dat is in the folder of DisplayIcon (interactive check)"},
    {kRecordRead, progress, "the record installedupdates.dat was read"},
    {kRecordReadFailed, trouble,
     "the record installedupdates.dat could not be read and counts as empty; the line above the entry is "
     "Windows' message",
     "check the rights on this file, and whether another program holds it"},
    {kRecordDeleted, trouble, kAhead, kCheckVersion},
    {kRecordDeletedInteractive, trouble, kAhead, kCheckVersion},
    {kRecordDenied, trouble,
     "the record installedupdates.dat names a pack above the version that was read from " TAVREL_IMAGE
     ", and Windows refuses to delete it: the user lacks the right, or it is read-only",
     kRemoveRecord},
    {kRecordNotDeleted, trouble,
     "the record installedupdates.dat names a pack above the version that was read from " TAVREL_IMAGE
     ", and could not be deleted",
     kRemoveRecord},
    {kDetailsFound[1], offered, "an update is offered; installedupdates.dat has text"},
    {kDetailsFound[2], offered, "an update is offered; installedupdates.dat is empty or could not be read"},
    {kDetailsFound[3], offered, "an update is offered; there is no installedupdates.dat"},
    {kDetailsNotFound[1], not_offered,
     "no update is offered: installedupdates.dat names every pack of the list, or no pack is newer "
     "than " TAVREL_IMAGE},
    {kDetailsNotFound[2], not_offered,
     "no update is offered; installedupdates.dat is empty or could not be read, or the list names no pack or "
     "was not fetched"},
    {kDetailsNotFound[3], not_offered, "no update is offered; there is no installedupdates.dat"},
    {kMatching, progress,
     "no pack of the list is newer than " TAVREL_IMAGE
     ", or (only with exit code 1) installedupdates.dat names them all"},
    {kUpdatesEnd, progress, "the check ends"},
};

/// The program has this text as bytes; all others are wide.
const std::wstring kHistory(kHistoryFailed.begin(), kHistoryFailed.end());

const Text kAfterCheck[] = {
    {kPathNotFound, launch_failed,
     "Install Updates could not start the update, because DisplayIcon of the product names no folder",
     "install " TAVREL_PRODUCT_LABEL " again"},
    OpenEnded(
        {kFileNotFound, launch_failed,
         "Install Updates could not start the update, because the file at the end of the entry is missing",
         "correct DisplayIcon, which must be the bare path of " TAVREL_IMAGE
         ", or install " TAVREL_PRODUCT_LABEL " again"}),
    OpenEnded({kError, code, "Windows' error code of the entry above it; see the list of codes"}),
    {kCreationFailed, trouble, "no new log file could be made",
     "check that users may create files in C:\\ProgramData\\" TAVREL_PRODUCT "\\" TAVREL_FOLDER},
    OpenEnded({kUpdateFailed, trouble,
               "the log file could not be written or read; Windows' message stands at the end of the entry",
               "check the rights on C:\\ProgramData\\" TAVREL_PRODUCT "\\" TAVREL_FOLDER
               " and the space on its disk"}),
    {kHistory, trouble,
     "the newest log file could not be written, and it could not be read or has more than 64 MiB, so a new "
     "one begins here",
     "look for the earlier runs in the older file, and check its rights"},
};

}  // namespace

std::string Narrow(std::wstring_view constant) {
  std::string narrow;
  for (const wchar_t c : text::Trim(constant)) narrow += static_cast<char>(c);
  return narrow;
}

std::span<const TextGroup> TextGroups() {
  static const std::vector<Text> registered = RegisteredTexts();
  static const TextGroup groups[] = {
      {"Header of a run", kHeader},
      {"Settings file (korsa.ini)", kSettings},
      {"Registry values of the product", registered},
      {"Exchange with the server", kExchange},
      {"Comparison", kComparison},
      {"At any time", kAfterCheck},
  };
  return groups;
}

}  // namespace logcheck
