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
using namespace update_texts;

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
    " in the folder Installpath: delete the record as an administrator "
    "only if its pack is newer; otherwise that version was not read and counted as 0: make the file readable "
    "there";

/// The program has this text as bytes; all others are wide.
constexpr auto kHistoryFailed = [] {
  std::array<wchar_t, log_texts::kHistoryFailed.size()> wide{};
  for (std::size_t i = 0; i < wide.size(); ++i) wide[i] = static_cast<wchar_t>(log_texts::kHistoryFailed[i]);
  return wide;
}();

constexpr Text kExchange[] = {
    Step(kHostMatched, "the update host of the settings occurs in the product's URLUpdateInfo"),
    Step(kHostNotMatched,
         "the update host of the settings does not occur, letter for letter, in the product's URLUpdateInfo",
         "correct UPDATE_LOC in the user's korsa.ini, or empty it; if it is empty, the built-in host is "
         "used, and URLUpdateInfo must name that host: install " TAVREL_PRODUCT_LABEL
         " again, or tell the publisher"),
    Step(kUrlMode, "UPDATE_LOC_URL is set in the user's korsa.ini, which switches the check off",
         "remove UPDATE_LOC_URL from korsa.ini and start the utility again"),
    WithRole(mismatch, kInvalidTagThree,
             "settings and URLUpdateInfo give no address of a list, so no server was asked",
             "check that URLUpdateInfo holds the update host, a slash and the path of the list"),
    Failure(kProbeFailed, "the public address that is tried before the update host could not be reached",
            "check the network, and that the firewall lets QRTTavrelUtility.exe reach the probe address "
            "(administrator's guide, Network); no check works through a proxy"),
    Failure(kOpenFailed, "Windows could not prepare its internet functions"),
    Trouble(kOptionStatus,
            "the waiting time TIMEOUT could not be set for the session, so that of Windows can apply",
            "do nothing unless checks take too long"),
    Failure(kConnectFailed, "the connection to the update host could not be prepared"),
    Failure(kOpenRequestFailed, "the request for the list could not be prepared"),
    Failure(kSendRequestFailed, "the request to the update host failed"),
    Step(kFound, "the server answered with status 200"),
    Failure(kNotFound, "the server did not send the list"),
    WithRole(
        odd_status, kStatusCode,
        "the server answered with an unexpected status, and what it sent was read as a list all the same"),
    Failure(kStatusFailed, "the status of the server's answer could not be read"),
    Failure(kFileFailed, "the file updates.ini could not be made in the user's temporary folder", kCheckTemp),
    Failure(kFileReadFailed,
            "the list could not be received to its end, or updates.ini could not be opened to read it"),
    Failure(kFileWriteFailed, "the list could not be written to updates.ini in the user's temporary folder",
            kCheckTemp),
    OpenEnded(WithRole(code, kErrorPrefix, "code or message of the failure above it; see the list of codes")),
    WithRole(
        code, kMismatch,
        "message in place of a code: settings and URLUpdateInfo do not fit together, so no server was asked",
        "look at the entries above it"),
    Step(kCompleted, "what the server sent is in updates.ini"),
    Failure(kCopiedMissing,
            "the file updates.ini was gone from the user's temporary folder before it was read",
            "find the program that removes files from %TEMP%, such as a virus scanner, and check again"),
};

constexpr Text kComparison[] = {
    Step(kRecordMissing,
         "the list names no pack, or was not fetched; there is no installedupdates.dat either"),
    Step(kRecordFound, "the record installedupdates.dat is in the folder of DisplayIcon (start-up check)"),
    Step(kRecordFoundInteractive,
         "the record installedupdates.dat is in the folder of DisplayIcon (interactive check)"),
    Step(kRecordRead, "the record installedupdates.dat was read"),
    Trouble(kRecordReadFailed,
            "the record installedupdates.dat could not be read and counts as empty; the line above the entry "
            "is Windows' message",
            "check the rights on this file, and whether another program holds it"),
    Trouble(kRecordDeleted, kAhead, kCheckVersion),
    Trouble(kRecordDeletedInteractive, kAhead, kCheckVersion),
    Trouble(kRecordDenied,
            "the record installedupdates.dat names a pack above the version that was read from " TAVREL_IMAGE
            ", and Windows refuses to delete it: the user lacks the right, or it is read-only",
            kRemoveRecord),
    Trouble(kRecordNotDeleted,
            "the record installedupdates.dat names a pack above the version that was read from " TAVREL_IMAGE
            ", and could not be deleted",
            kRemoveRecord),
    WithRole(offered, kDetailsFound[1], "an update is offered; installedupdates.dat has text"),
    WithRole(offered, kDetailsFound[2],
             "an update is offered; installedupdates.dat is empty or could not be read"),
    WithRole(offered, kDetailsFound[3], "an update is offered; there is no installedupdates.dat"),
    WithRole(not_offered, kDetailsNotFound[1],
             "no update is offered: installedupdates.dat names every pack of the list, or no pack is newer "
             "than " TAVREL_IMAGE),
    WithRole(not_offered, kDetailsNotFound[2],
             "no update is offered; installedupdates.dat is empty or could not be read, or the list names no "
             "pack or was not fetched"),
    WithRole(not_offered, kDetailsNotFound[3], "no update is offered; there is no installedupdates.dat"),
    Step(kMatching, "no pack of the list is newer than " TAVREL_IMAGE
                    ", or (only with exit code 1) installedupdates.dat names them all"),
    Step(kUpdatesEnd, "the check ends"),
};

constexpr Text kAfterCheck[] = {
    WithRole(launch_failed, ui_texts::kPathNotFound,
             "Install Updates could not start the update, because DisplayIcon of the product names no folder",
             "install " TAVREL_PRODUCT_LABEL " again"),
    OpenEnded(WithRole(
        launch_failed, ui_texts::kFileNotFound,
        "Install Updates could not start the update, because the file at the end of the entry is missing",
        "correct DisplayIcon, which must be the bare path of " TAVREL_IMAGE
        ", or install " TAVREL_PRODUCT_LABEL " again")),
    OpenEnded(WithRole(code, log_texts::kError,
                       "Windows' error code of the entry above it; see the list of codes")),
    Trouble(log_texts::kCreationFailed, "no new log file could be made",
            "check that users may create files in C:\\ProgramData\\" TAVREL_PRODUCT "\\" TAVREL_FOLDER),
    OpenEnded(
        Trouble(log_texts::kUpdateFailed,
                "the log file could not be written or read; Windows' message stands at the end of the entry",
                "check the rights on C:\\ProgramData\\" TAVREL_PRODUCT "\\" TAVREL_FOLDER
                " and the space on its disk")),
    Trouble({kHistoryFailed.data(), kHistoryFailed.size()},
            "the newest log file could not be written, and it could not be read or has more than 64 MiB, so "
            "a new one begins here",
            "look for the earlier runs in the older file, and check its rights"),
};

}  // namespace

std::vector<TextGroup> GroupsFromExchange() {
  return {{.title = "Exchange with the server", .texts = kExchange},
          {.title = "Comparison", .texts = kComparison},
          {.title = "At any time", .texts = kAfterCheck}};
}

std::span<const TextGroup> TextGroups() {
  static const std::vector<TextGroup> groups = [] {
    std::vector<TextGroup> all = GroupsBeforeExchange();
    for (const TextGroup& group : GroupsFromExchange()) all.push_back(group);
    return all;
  }();
  return groups;
}

}  // namespace logcheck
