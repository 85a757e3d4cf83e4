// The texts of the exchange with the server, of the comparison, and of the steps after a check.
#include <array>
#include <string_view>

#include "log/log_texts.h"
#include "logcheck/texts.h"
#include "ui/ui_texts.h"
#include "update/update_texts.h"
#include "version.h"

namespace logcheck {
namespace {

using enum Role;
using update_texts::kDetailsFound;
using update_texts::kDetailsNotFound;

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
    " in the folder Installpath: if the pack is newer, delete the record "
    "as an administrator; if not, the version was not read and counted as 0: keep the record, and see that "
    "the file "
    "is in that folder and can be read at any time";

/// The program has this text as bytes; all others are wide.
constexpr auto kHistoryFailed = [] {
  std::array<wchar_t, log_texts::kHistoryFailed.size()> wide{};
  for (std::size_t i = 0; i < wide.size(); ++i) wide[i] = static_cast<wchar_t>(log_texts::kHistoryFailed[i]);
  return wide;
}();

constexpr Text kExchange[] = {
    {.text = update_texts::kHostMatched,
     .means = "the update host of the settings occurs in the product's URLUpdateInfo"},
    {.text = update_texts::kHostNotMatched,
     .means =
         "the update host of the settings does not occur, letter for letter, in the product's URLUpdateInfo",
     .advice = "correct UPDATE_LOC in the user's korsa.ini, or empty it; if it is empty, the built-in host "
               "is used, "
               "and URLUpdateInfo must name that host: install " TAVREL_PRODUCT_LABEL
               " again, or tell the publisher"},
    {.text = update_texts::kUrlMode,
     .means = "UPDATE_LOC_URL is set in the user's korsa.ini, which switches the check off",
     .advice = "remove UPDATE_LOC_URL from korsa.ini and start the utility again"},
    {.text = update_texts::kInvalidTagThree,
     .role = mismatch,
     .means = "settings and URLUpdateInfo give no address of a list, so no server was asked",
     .advice = "check that URLUpdateInfo holds the update host, a slash and the path of the list"},
    {.text = update_texts::kProbeFailed,
     .role = exchange_failed,
     .means = "the public address that is tried before the update host could not be reached",
     .advice = "check the network, and that the firewall lets QRTTavrelUtility.exe reach the probe address "
               "(administrator's guide, Network); no check works through a proxy"},
    {.text = update_texts::kOpenFailed,
     .role = exchange_failed,
     .means = "Windows could not prepare its internet functions"},
    {.text = update_texts::kOptionStatus,
     .role = trouble,
     .means = "the waiting time TIMEOUT could not be set for the session, so that of Windows can apply",
     .advice = "do nothing unless checks take too long"},
    {.text = update_texts::kConnectFailed,
     .role = exchange_failed,
     .means = "the connection to the update host could not be prepared"},
    {.text = update_texts::kOpenRequestFailed,
     .role = exchange_failed,
     .means = "the request for the list could not be prepared"},
    {.text = update_texts::kSendRequestFailed,
     .role = exchange_failed,
     .means = "the request to the update host failed"},
    {.text = update_texts::kFound, .means = "the server answered with status 200"},
    {.text = update_texts::kNotFound, .role = exchange_failed, .means = "the server did not send the list"},
    {.text = update_texts::kStatusCode,
     .role = odd_status,
     .means =
         "the server answered with an unexpected status, and what it sent was read as a list all the same"},
    {.text = update_texts::kStatusFailed,
     .role = exchange_failed,
     .means = "the status of the server's answer could not be read"},
    {.text = update_texts::kFileFailed,
     .role = exchange_failed,
     .means = "the file updates.ini could not be made in the user's temporary folder",
     .advice = kCheckTemp},
    {.text = update_texts::kFileReadFailed,
     .role = exchange_failed,
     .means = "the list could not be received to its end, or updates.ini could not be opened to read it"},
    {.text = update_texts::kFileWriteFailed,
     .role = exchange_failed,
     .means = "the list could not be written to updates.ini in the user's temporary folder",
     .advice = kCheckTemp},
    {.text = update_texts::kErrorPrefix,
     .open_ended = true,
     .role = code,
     .means = "code or message of the failure above it; see the list of codes"},
    {.text = update_texts::kMismatch,
     .role = code,
     .means =
         "message in place of a code: settings and URLUpdateInfo do not fit together, so no server was asked",
     .advice = "look at the entries above it"},
    {.text = update_texts::kCompleted, .means = "what the server sent is in updates.ini"},
    {.text = update_texts::kCopiedMissing,
     .role = exchange_failed,
     .means = "the file updates.ini was gone from the user's temporary folder before it was read",
     .advice = "find the program that removes files from %TEMP%, such as a virus scanner, and check again"},
};

constexpr Text kComparison[] = {
    {.text = update_texts::kRecordMissing,
     .means = "the list names no pack, or was not fetched; there is no installedupdates.dat either"},
    {.text = update_texts::kRecordFound,
     .means = "the record installedupdates.dat is in the folder of DisplayIcon (start-up check)"},
    {.text = update_texts::kRecordFoundInteractive,
     .means = "the record installedupdates.dat is in the folder of DisplayIcon (interactive check)"},
    {.text = update_texts::kRecordRead, .means = "the record installedupdates.dat was read"},
    {.text = update_texts::kRecordReadFailed,
     .role = trouble,
     .means =
         "the record installedupdates.dat could not be read and counts as empty; the line above the entry is "
         "Windows' message",
     .advice = "check the rights on this file, and whether another program holds it"},
    {.text = update_texts::kRecordDeleted, .role = trouble, .means = kAhead, .advice = kCheckVersion},
    {.text = update_texts::kRecordDeletedInteractive,
     .role = trouble,
     .means = kAhead,
     .advice = kCheckVersion},
    {.text = update_texts::kRecordDenied,
     .role = trouble,
     .means =
         "the record installedupdates.dat names a pack above the version that was read from " TAVREL_IMAGE
         ", and Windows refuses to delete it: the user lacks the right, or it is read-only",
     .advice = kRemoveRecord},
    {.text = update_texts::kRecordNotDeleted,
     .role = trouble,
     .means =
         "the record installedupdates.dat names a pack above the version that was read from " TAVREL_IMAGE
         ", and could not be deleted",
     .advice = kRemoveRecord},
    {.text = kDetailsFound[1],
     .role = offered,
     .means = "an update is offered; installedupdates.dat has text"},
    {.text = kDetailsFound[2],
     .role = offered,
     .means = "an update is offered; installedupdates.dat is empty or could not be read"},
    {.text = kDetailsFound[3],
     .role = offered,
     .means = "an update is offered; there is no installedupdates.dat"},
    {.text = kDetailsNotFound[1],
     .role = not_offered,
     .means = "no update is offered: installedupdates.dat names every pack of the list, or no pack is newer "
              "than " TAVREL_IMAGE},
    {.text = kDetailsNotFound[2],
     .role = not_offered,
     .means = "no update is offered; installedupdates.dat is empty or could not be read, or the list names "
              "no pack "
              "or was not fetched"},
    {.text = kDetailsNotFound[3],
     .role = not_offered,
     .means = "no update is offered; there is no installedupdates.dat"},
    {.text = update_texts::kMatching,
     .means = "no pack of the list is newer than " TAVREL_IMAGE
              ", or (only with exit code 1) installedupdates.dat names them all"},
    {.text = update_texts::kUpdatesEnd, .means = "the check ends"},
};

constexpr Text kAfterCheck[] = {
    {.text = ui_texts::kPathNotFound,
     .role = launch_failed,
     .means =
         "Install Updates could not start the update, because DisplayIcon of the product names no folder",
     .advice = "install " TAVREL_PRODUCT_LABEL " again"},
    {.text = ui_texts::kFileNotFound,
     .open_ended = true,
     .role = launch_failed,
     .means =
         "Install Updates could not start the update, because the file at the end of the entry is missing",
     .advice = "correct DisplayIcon, which must be the bare path of " TAVREL_IMAGE
               ", or install " TAVREL_PRODUCT_LABEL " again"},
    {.text = log_texts::kError,
     .open_ended = true,
     .role = code,
     .means = "Windows' error code of the entry above it; see the list of codes"},
    {.text = log_texts::kCreationFailed,
     .role = trouble,
     .means = "no new log file could be made",
     .advice = "check that users may create files in C:\\ProgramData\\" TAVREL_PRODUCT "\\" TAVREL_FOLDER},
    {.text = log_texts::kUpdateFailed,
     .open_ended = true,
     .role = trouble,
     .means = "the log file could not be written or read; Windows' message stands at the end of the entry",
     .advice = "check the rights on C:\\ProgramData\\" TAVREL_PRODUCT "\\" TAVREL_FOLDER
               " and the space on its disk"},
    {.text = {kHistoryFailed.data(), kHistoryFailed.size()},
     .role = trouble,
     .means = "the newest log file could not be written, and it could not be read or has more than 64 MiB, "
              "so a new "
              "one begins here",
     .advice = "look for the earlier runs in the older file, and check its rights"},
};

}  // namespace

std::span<const Text> ExchangeTexts() {
  return kExchange;
}

std::span<const Text> ComparisonTexts() {
  return kComparison;
}

std::span<const Text> AfterCheckTexts() {
  return kAfterCheck;
}

std::span<const TextGroup> TextGroups() {
  static const TextGroup groups[] = {{.title = "Header of a run", .texts = HeaderTexts()},
                                     {.title = "Settings file (korsa.ini)", .texts = SettingsTexts()},
                                     {.title = "Registry values of the product", .texts = RegisteredTexts()},
                                     {.title = "Exchange with the server", .texts = ExchangeTexts()},
                                     {.title = "Comparison", .texts = ComparisonTexts()},
                                     {.title = "At any time", .texts = AfterCheckTexts()}};
  return groups;
}

}  // namespace logcheck
