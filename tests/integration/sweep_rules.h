#pragma once

namespace sweep {

/// What a failing call must lead to. Calls without a rule must change nothing at all when they fail alone.
struct Rule {
  const char* scenes;  ///< letters of the scenes it holds in
  const char* function;
  const wchar_t* subject;  ///< end of the call's subject
  int nth;                 ///< which of the calls with this subject; 0: any
  int code;                ///< with which code; 0: any that has no rule of its own
  /// Must stand in what was said: '|' between entries, '#' for the code, '~' between alternatives. Empty: the
  /// outcome may differ, the scene's own judge decides.
  const wchar_t* text;
};

inline constexpr wchar_t kUninstall[] =
    L"Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnexa 15.0";
inline constexpr wchar_t kMaker[] = L"Wow6432Node\\NORVIK Software Inc.\\Varnexa\\15.0";

inline constexpr Rule kRules[] = {
    // Registered data.
    {"cdi", "RegOpenKeyExW", L"SOFTWARE\\Wow6432Node", 0, 2, L"Registry bit support Mode Two identified."},
    {"cdi", "RegOpenKeyExW", L"SOFTWARE\\Wow6432Node", 0, 0,
     L"Registry bit support mode  identification failed: |Error : #"},
    {"cdi", "RegOpenKeyExW", kUninstall, 1, 0, L"entries check, Reading tag one failed to open.|Error : #"},
    {"cdi", "RegOpenKeyExW", kUninstall, 2, 0, L"entries check, Reading tag two  failed to open.|Error : #"},
    {"cdi", "RegOpenKeyExW", kUninstall, 3, 0, L"entries check, Reading tag three failed to open.|Error : #"},
    {"cdi", "RegOpenKeyExW", L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnexa 15.0", 1, 0,
     L"Reading alternative tag one path failed to open.|Error : #~Reading tag one failed to open.|Error : #"},
    {"cdi", "RegQueryValueExW", L"DisplayVersion", 1, 2, L"Reading tag one query failed.|Error : 2"},
    {"cdi", "RegQueryValueExW", L"DisplayVersion", 1, 0, L"Reading tag one query failed. |Error : #"},
    {"cdi", "RegQueryValueExW", L"DisplayIcon", 0, 0, L"Reading tag two query failed. |Error : #"},
    {"cdi", "RegQueryValueExW", L"URLUpdateInfo", 0, 0, L"Reading tag three query failed.|Error : #"},
    {"cd", "RegOpenKeyExW", kMaker, 0, 0, L"Registered Data Entries Check : End"},
    {"cd", "RegQueryValueExW", L"Installpath", 0, 0, L"Registered Data Entries Check : End"},
    {"i", "RegOpenKeyExW", kMaker, 1, 2,
     L"level version add-on failed.|Error : 2|Registered data entries check, version information not found."},
    {"i", "RegOpenKeyExW", kMaker, 1, 0,
     L"version information failed to open.|Error : #|Registered data entries check, version information not "
     L"found."},
    {"i", "RegOpenKeyExW", kMaker, 2, 0, L"Client side update check, level two (L1) failed|Error : #"},
    {"i", "RegQueryValueExW", L"Version", 1, 2,
     L"level version (L1) failed|Error : 2|Client side update check, level version add-on failed.|Error : "
     L"2|"},
    {"i", "RegQueryValueExW", L"Version", 1, 0,
     L"version information query failed|Error : #|Registered data entries check, version information not "
     L"found."},
    {"i", "RegQueryValueExW", L"Installpath", 0, 0, L"Client side update check, level two failed.|Error : #"},
    // The product executable, looked for under a second name after the first; its version, read a second time
    // for
    // the comparison, which says nothing without it.
    {"cdi", "PathFileExistsW", L"\\qrt.exe", 0, 0, L""},
    {"c", "GetFileVersionInfoSizeW", L"\\Qrt.exe", 2, 0, L"Server side update check completed.|===="},
    {"c", "GetFileVersionInfoW", L"\\Qrt.exe", 2, 0, L"Server side update check completed.|===="},
    {"c", "VerQueryValueW", L"\\", 2, 0, L"Server side update check completed.|===="},
    // Exchange.
    {"cdi", "InternetCheckConnectionW", L"", 0, 0,
     L"Connect to the server not successful.| Error : # Please check your network and permissions.|"},
    {"cdi", "InternetOpenW", L"", 0, 0,
     L"Connect to the server not successful.InternetOpen failed.| Error : #|"},
    {"cdi", "InternetSetOptionW", L"", 0, 0, L"Connection option status :|#|"},
    {"cdi", "InternetConnectW", L"", 0, 0,
     L"Connect to the server not successful.InternetConnect failed.| Error : #|"},
    {"cdi", "HttpOpenRequestW", L"", 0, 0,
     L"Connect to the server not successful.Client side open request failed.| Error : #|"},
    {"cdi", "HttpSendRequestW", L"", 0, 0,
     L"Connect to the server not successful. Client side send request failed.| Error : #|"},
    {"cdi", "HttpQueryInfoW", L"", 0, 0,
     L"Client side request: Information status code:|0|Client side request: Failed.| Error : #|"},
    {"cdi", "GetTempPathW", L"", 0, 0,
     L"Client side file update : Failed.| Error : ~Connect to the server not successful.~Client side "
     L"request: Failed."},
    {"cdi", "CreateFileW", L"\\updates.ini", 0, 0, L"Client side file update : Failed.| Error : #|"},
    {"cdi", "CreateFileW", L"", 1, 0, L""},
    {"cdi", "InternetReadFile", L"", 0, 0, L"Client side file update : File read failed.| Error : #|"},
    {"cdi", "WriteFile", L"", 0, 0, L"Client side file update: File write failed.| Error : #|"},
    {"cdi", "PathFileExistsW", L"\\updates.ini", 0, 0,
     L"Server side update check completed.|Copied INI file does not exists.|"},
    {"c", "GetPrivateProfileSectionNamesW", L"", 0, 0,
     L"Installer local update file does not exists.|Update details not found.Exit code 3.|"},
    {"di", "GetPrivateProfileSectionNamesW", L"", 0, 0, L"Update details not found.Exit code 2.|"},
    // Comparison with a record.
    {"di", "PathFileExistsW", L"\\installedupdates.dat", 0, 0, L"pdate"},
    {"di", "CreateFileW", L"\\installedupdates.dat", 0, 0,
     L"Read installer update file failed.|Update details "},
    {"di", "ReadFile", L"", 0, 0, L"Read installer update file failed.|Update details "},
    {"di", "DeleteFileW", L"", 0, 5,
     L"Not able to access Installer update file exists in local.|Update details found. Exit code 1.|"},
    {"di", "DeleteFileW", L"", 0, 0,
     L"Validating Installer update file exists in local.|Error : #|Update details found. Exit code 1.|"},
    // Start-up: rights, folder, seed.
    {"s", "OpenThreadToken", L"", 0, 0, L"App  Mode: User, User Mode: NA, Invoke Mode: Patch verfication.|"},
    {"s", "OpenProcessToken", L"", 0, 0, L"App  Mode: User, "},
    {"s", "DuplicateToken", L"", 0, 0, L"App  Mode: User, "},
    {"s", "AllocateAndInitializeSid", L"", 0, 0, L"App  Mode: User, "},
    {"s", "InitializeAcl", L"", 0, 0, L"App  Mode: User, "},
    {"s", "AddAccessAllowedAce", L"", 0, 0, L"App  Mode: User, "},
    {"s", "InitializeSecurityDescriptor", L"", 0, 0, L"App  Mode: User, "},
    {"s", "SetSecurityDescriptorDacl", L"", 0, 0, L"App  Mode: User, "},
    {"s", "SetSecurityDescriptorGroup", L"", 0, 0, L"App  Mode: User, "},
    {"s", "SetSecurityDescriptorOwner", L"", 0, 0, L"App  Mode: User, "},
    {"s", "AccessCheck", L"", 0, 0, L"App  Mode: User, "},
    {"s", "SHGetFolderPathW", L"", 1, 0, L"Profile settings folder path is empty.|"},
    {"s", "SHGetFolderPathW", L"", 0, 0, L""},
    {"s", "PathAppendW", L"\\documents", 1, 0, L"Profile settings folder path is empty.|"},
    {"s", "PathAppendW", L"", 0, 0, L""},
    {"s", "GetFileAttributesW", L"", 0, 0, L""},
    {"s", "CreateDirectoryW", L"", 0, 0, L""},
    {"s", "GetModuleFileNameW", L"", 0, 0,
     L"copy failed: Source path not found.|Error : 2|Server settings INI validation failed.|"},
    {"s", "PathFileExistsW", L"\\program\\korsa.ini", 0, 0,
     L"copy failed: Source path not found.|Error : #|Server settings INI validation failed.|"},
    {"s", "CopyFileW", L"", 0, 0,
     L"Server settings INI file copy failed.|Error : #|Server settings INI validation failed.|"},
    // Log file: silent, or an error line.
    {"lnp", "SHGetSpecialFolderPathW", L"", 0, 0, L""},
    {"lnp", "GetFileAttributesW", L"", 0, 0, L""},
    {"lp", "FindFirstFileW", L"", 0, 0, L""},
    {"lp", "FindNextFileW", L"", 0, 0, L""},
    {"lp", "CreateFileW", L"01Jan2020_01_00_AM.log", 0, 0, L""},
    {"l", "CreateFileW", L".log", 0, 0, L"Error in System Tavrel Log File creation."},
    {"n", "CreateFileW", L".log", 0, 0, L"Error in System Tavrel Log File creation."},
    {"ln", "SetFilePointerEx", L"", 1, 0, L"Error in System Tavrel Log File updates."},
    {"ln", "WriteFile", L"", 0, 0, L"Error in System Tavrel Log File updates."},
    {"lp", "ReadFile", L"", 0, 0, L""},
    {"p", "CreateFileW", L".log", 0, 0, L""},
    {"p", "SetFilePointerEx", L"", 0, 0, L""},
    {"p", "WriteFile", L"", 0, 0, L""},
    // Options.
    {"sp", "WritePrivateProfileStringW", L"", 0, 0, L""},
    {"p", "PathFileExistsW", L"\\Qrt.exe", 0, 0, L"The patch application file not found.\n"},
};

}  // namespace sweep
