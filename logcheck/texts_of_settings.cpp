// The texts of the run's header, the settings file and the product's registry values.
#include "log/log_texts.h"
#include "logcheck/texts.h"
#include "settings/registered_texts.h"
#include "settings/settings_texts.h"
#include "update/update_texts.h"

namespace logcheck {
namespace {

using enum Role;
using registered_texts::kClientVersion;
using registered_texts::kInstallPathLogged;
using registered_texts::kTagOne;
using registered_texts::kTagThree;
using registered_texts::kTagTwo;

constexpr std::string_view kInstallAgain =
    "install Varnexa 15.0 again, which writes its registry values anew";

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
     .means = "file version of the product's Qrt.exe; `NA` or nothing: it was not read"},
    {.text = log_texts::kAppMode,
     .open_ended = true,
     .role = header,
     .means = "`Admin`: the run had an administrator's rights; `User`: it had not"},
    {.text = log_texts::kInvokedByProduct,
     .role = header,
     .means = "the product started the utility (patch verification)"},
    {.text = log_texts::kInvokedByUser, .role = header, .means = "a user started the utility"},
};

constexpr Text kSettings[] = {
    {.text = settings_texts::kFileExists, .means = "the user's settings file is there and is used"},
    {.text = settings_texts::kFolderCreated,
     .means = "the folder Documents\\Varnexa\\QRT15 of the user was made: the user's first start"},
    {.text = settings_texts::kCopied,
     .means = "the user's settings file was made from the korsa.ini beside the program"},
    {.text = settings_texts::kFolderPathEmpty,
     .role = trouble,
     .means = "Windows names no Documents folder for this user, so the built-in settings are used",
     .advice = "repair the user's Documents folder; a redirected folder must be reachable"},
    {.text = settings_texts::kSourceNotFound,
     .role = trouble,
     .means = "there is no korsa.ini beside the program, so the built-in settings are used",
     .advice = "put korsa.ini beside QRTTavrelUtility.exe, or install the utility again"},
    {.text = settings_texts::kCopyFailed,
     .role = trouble,
     .means = "the korsa.ini beside the program could not be copied to Documents\\Varnexa\\QRT15",
     .advice = "give the user write access to that folder; where Controlled Folder Access is on, allow "
               "QRTTavrelUtility.exe"},
    {.text = settings_texts::kValidationFailed,
     .means = "this run has no settings file and uses the built-in settings; the entry above tells why"},
};

constexpr Text kRegistered[] = {
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

    {.text = kClientVersion.completed,
     .role = value_read,
     .reader = &kClientVersion,
     .means = "the value Version of the maker's key was read"},
    {.text = kClientVersion.open_failed,
     .role = value_missing,
     .reader = &kClientVersion,
     .means = "the maker's key, which holds the value Version, could not be opened",
     .advice = kInstallAgain},
    {.text = kClientVersion.empty,
     .role = value_missing,
     .reader = &kClientVersion,
     .means = "the value Version of the maker's key is empty",
     .advice = kInstallAgain},
    {.text = kClientVersion.query_failed,
     .role = value_missing,
     .reader = &kClientVersion,
     .means = "the value Version of the maker's key could not be read",
     .advice = kInstallAgain},
    {.text = kClientVersion.query_missing,
     .role = value_missing,
     .reader = &kClientVersion,
     .means = "the maker's key lacks the value Version",
     .advice = kInstallAgain},
    {.text = kClientVersion.alternative_completed,
     .role = value_read,
     .reader = &kClientVersion,
     .means = "the value Version was read from the maker's key directly under SOFTWARE"},
    {.text = kClientVersion.alternative_open_failed,
     .role = value_missing,
     .reader = &kClientVersion,
     .means = "the maker's key directly under SOFTWARE could not be opened either",
     .advice = kInstallAgain},
    {.text = kClientVersion.alternative_query_failed,
     .role = value_missing,
     .reader = &kClientVersion,
     .means = "the value Version of the maker's key directly under SOFTWARE could not be read either",
     .advice = kInstallAgain},
    {.text = kClientVersion.alternative_empty,
     .role = value_missing,
     .reader = &kClientVersion,
     .means = "the value Version of the maker's key directly under SOFTWARE is empty",
     .advice = kInstallAgain},
    {.text = update_texts::kVersionNotFound,
     .role = not_installed,
     .means = "no product of version 15.0 is registered, so no server was asked",
     .advice = "install Varnexa 15.0 again if it is to be on this computer"},

    {.text = kTagOne.completed,
     .role = value_read,
     .reader = &kTagOne,
     .means = "DisplayVersion of the product's uninstall entry was read"},
    {.text = kTagOne.open_failed,
     .role = value_missing,
     .reader = &kTagOne,
     .means = "the product's uninstall entry, which holds DisplayVersion, could not be opened",
     .advice = kInstallAgain},
    {.text = kTagOne.empty,
     .role = value_missing,
     .reader = &kTagOne,
     .means = "DisplayVersion of the product's uninstall entry is empty",
     .advice = kInstallAgain},
    {.text = kTagOne.query_failed,
     .role = value_missing,
     .reader = &kTagOne,
     .means = "DisplayVersion of the product's uninstall entry could not be read",
     .advice = kInstallAgain},
    {.text = kTagOne.alternative_completed,
     .role = value_read,
     .reader = &kTagOne,
     .means = "DisplayVersion was read from the uninstall entry directly under SOFTWARE"},
    {.text = kTagOne.alternative_open_failed,
     .role = value_missing,
     .reader = &kTagOne,
     .means = "the uninstall entry directly under SOFTWARE could not be opened either",
     .advice = kInstallAgain},
    {.text = kTagOne.alternative_query_failed,
     .role = value_missing,
     .reader = &kTagOne,
     .means = "DisplayVersion of the uninstall entry directly under SOFTWARE could not be read either",
     .advice = kInstallAgain},
    {.text = kTagOne.alternative_empty,
     .role = value_missing,
     .reader = &kTagOne,
     .means = "DisplayVersion of the uninstall entry directly under SOFTWARE is empty",
     .advice = kInstallAgain},

    {.text = kTagTwo.completed,
     .role = value_read,
     .reader = &kTagTwo,
     .means = "DisplayIcon of the product's uninstall entry, the path of Qrt.exe, was read"},
    {.text = kTagTwo.open_failed,
     .role = value_missing,
     .reader = &kTagTwo,
     .means = "the product's uninstall entry, which holds DisplayIcon, could not be opened",
     .advice = kInstallAgain},
    {.text = kTagTwo.empty,
     .role = value_missing,
     .reader = &kTagTwo,
     .means = "DisplayIcon of the product's uninstall entry is empty",
     .advice = kInstallAgain},
    {.text = kTagTwo.query_failed,
     .role = value_missing,
     .reader = &kTagTwo,
     .means = "DisplayIcon of the product's uninstall entry could not be read",
     .advice = kInstallAgain},

    {.text = kTagThree.completed,
     .role = value_read,
     .reader = &kTagThree,
     .means = "URLUpdateInfo of the product's uninstall entry, the address of the list, was read"},
    {.text = kTagThree.open_failed,
     .role = value_missing,
     .reader = &kTagThree,
     .means = "the product's uninstall entry, which holds URLUpdateInfo, could not be opened",
     .advice = kInstallAgain},
    {.text = kTagThree.empty,
     .role = value_missing,
     .reader = &kTagThree,
     .means = "URLUpdateInfo of the product's uninstall entry is empty",
     .advice = kInstallAgain},
    {.text = kTagThree.query_failed,
     .role = value_missing,
     .reader = &kTagThree,
     .means = "URLUpdateInfo of the product's uninstall entry could not be read",
     .advice = kInstallAgain},

    {.text = kInstallPathLogged.open_failed,
     .role = value_missing,
     .reader = &kInstallPathLogged,
     .means = "the maker's key, which holds Installpath, could not be opened",
     .advice = kInstallAgain},
    {.text = kInstallPathLogged.empty,
     .role = value_missing,
     .reader = &kInstallPathLogged,
     .means = "the value Installpath of the maker's key is empty",
     .advice = kInstallAgain},
    {.text = kInstallPathLogged.query_failed,
     .role = value_missing,
     .reader = &kInstallPathLogged,
     .means = "the value Installpath of the maker's key could not be read",
     .advice = kInstallAgain},
    {.text = update_texts::kEntriesEnd, .means = "the registry values of the product have been read"},
    {.text = update_texts::kUpdatesStart, .means = "the check of what the server offers begins"},
    {.text = update_texts::kEntriesNotFound,
     .role = facts_missing,
     .means = "DisplayVersion, DisplayIcon or Installpath of the product is missing, so no server was asked",
     .advice = kInstallAgain},
};

}  // namespace

std::span<const Text> HeaderTexts() {
  return kHeader;
}

std::span<const Text> SettingsTexts() {
  return kSettings;
}

std::span<const Text> RegisteredTexts() {
  return kRegistered;
}

}  // namespace logcheck
