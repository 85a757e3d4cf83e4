// The texts of the exchange with the server, of the comparison, and of the steps after a check.
#include <array>
#include <string_view>

#include "log/log_texts.h"
#include "logcheck/texts.h"
#include "ui/ui_texts.h"
#include "update/update_texts.h"

namespace logcheck {
namespace {

using enum Role;
using update_texts::kDetailsFound;
using update_texts::kDetailsNotFound;

constexpr std::string_view kCheckTemp =
    "check that the user's %TEMP% exists, may be written to and has space, and that no other program, such "
    "as a virus scanner, holds updates.ini in it";
constexpr std::string_view kRemoveRecord =
    "delete installedupdates.dat in the product's folder as an administrator";

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
     .advice = "correct UPDATE_LOC in the user's korsa.ini, or empty it so that the built-in host is used"},
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
     .means = "the waiting time TIMEOUT could not be set, so that of Windows applies",
     .advice = "do nothing unless checks take too long"},
    {.text = update_texts::kConnectFailed,
     .role = exchange_failed,
     .means = "the connection to the update host could not be prepared"},
    {.text = update_texts::kOpenRequestFailed,
     .role = exchange_failed,
     .means = "the request for the list could not be prepared"},
    {.text = update_texts::kSendRequestFailed,
     .role = exchange_failed,
     .means = "the update host did not answer the request for the list"},
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
     .means = "the list could not be read to its end"},
    {.text = update_texts::kFileWriteFailed,
     .role = exchange_failed,
     .means = "the list could not be written to updates.ini in the user's temporary folder",
     .advice = kCheckTemp},
    {.text = update_texts::kErrorPrefix,
     .open_ended = true,
     .role = code,
     .means = "code or message of the failure above it; see the list of codes"},
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
     .means = "the record installedupdates.dat is in the product's folder"},
    {.text = update_texts::kRecordFoundInteractive,
     .means = "the record installedupdates.dat is in the product's folder"},
    {.text = update_texts::kRecordRead, .means = "the record installedupdates.dat was read"},
    {.text = update_texts::kRecordReadFailed,
     .role = trouble,
     .means = "the record installedupdates.dat could not be read and counts as empty; the line above is "
              "Windows' message",
     .advice = "check the rights on this file, and whether another program holds it"},
    {.text = update_texts::kRecordDeleted,
     .role = trouble,
     .means = "the record installedupdates.dat named packs that are newer than Qrt.exe, and was deleted"},
    {.text = update_texts::kRecordDeletedInteractive,
     .role = trouble,
     .means = "the record installedupdates.dat named packs that are newer than Qrt.exe, and was deleted"},
    {.text = update_texts::kRecordDenied,
     .role = trouble,
     .means = "the record installedupdates.dat names packs that are newer than Qrt.exe, and the user may not "
              "delete it",
     .advice = kRemoveRecord},
    {.text = update_texts::kRecordNotDeleted,
     .role = trouble,
     .means =
         "the record installedupdates.dat names packs that are newer than Qrt.exe, and could not be deleted",
     .advice = kRemoveRecord},
    {.text = kDetailsFound[1],
     .role = offered,
     .means = "an update is offered, compared with installedupdates.dat"},
    {.text = kDetailsFound[2],
     .role = offered,
     .means = "an update is offered; installedupdates.dat is empty"},
    {.text = kDetailsFound[3],
     .role = offered,
     .means = "an update is offered; there is no installedupdates.dat"},
    {.text = kDetailsNotFound[1],
     .role = not_offered,
     .means = "no update is offered, compared with installedupdates.dat"},
    {.text = kDetailsNotFound[2],
     .role = not_offered,
     .means =
         "no update is offered; installedupdates.dat is empty, or the list names no pack or was not fetched"},
    {.text = kDetailsNotFound[3],
     .role = not_offered,
     .means = "no update is offered; there is no installedupdates.dat"},
    {.text = update_texts::kMatching, .means = "no pack of the list is newer than the installed product"},
    {.text = update_texts::kUpdatesEnd, .means = "the check ends"},
};

constexpr Text kAfterCheck[] = {
    {.text = ui_texts::kPathNotFound,
     .role = launch_failed,
     .means =
         "Install Updates could not start the update, because DisplayIcon of the product names no folder",
     .advice = "install Varnexa 15.0 again"},
    {.text = ui_texts::kFileNotFound,
     .open_ended = true,
     .role = launch_failed,
     .means = "Install Updates could not start the update, because the file named at the end of the entry is "
              "missing",
     .advice = "correct DisplayIcon, which must be the bare path of Qrt.exe, or install Varnexa 15.0 again"},
    {.text = log_texts::kError,
     .open_ended = true,
     .role = code,
     .means = "Windows' error code of the entry above it; see the list of codes"},
    {.text = log_texts::kCreationFailed,
     .role = trouble,
     .means = "no new log file could be made",
     .advice = "check that users may create files in C:\\ProgramData\\Varnexa\\QRT15"},
    {.text = log_texts::kUpdateFailed,
     .open_ended = true,
     .role = trouble,
     .means = "the log file could not be written or read; Windows' message follows",
     .advice = "check the rights on C:\\ProgramData\\Varnexa\\QRT15 and the space on its disk"},
    {.text = {kHistoryFailed.data(), kHistoryFailed.size()},
     .role = trouble,
     .means = "the newest log file could be neither written nor read, so a new one begins here",
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
