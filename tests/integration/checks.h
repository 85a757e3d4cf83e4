#pragma once

#include <doctest.h>

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/sharing.h"
#include "platform/system_text.h"
#include "settings/registered_texts.h"
#include "support/http_server.h"
#include "support/machine.h"
#include "update/check_patch.h"
#include "update/process_state.h"
#include "update/sheet_check.h"
#include "update/update_texts.h"

/// What the tests of whole checks share.
namespace checks {

using namespace registered_texts;
using namespace update_texts;
using namespace support;
using Log = std::vector<std::wstring_view>;

/// The list of an earlier check, with a pack that a check must not find.
inline const std::string kOldList = std::string(999, '\n') + "[Varnexa15_0_9_9]\r\n";

// Time-outs before the status and in the body: seen under Wine 8 and 10; documented for Windows, where the
// code counts as a network error.
inline const std::wstring kHeaderTimeOut = OnWindows() ? L"12002" : L"12030";
inline const std::wstring kBodyTimeOut = OnWindows() ? L"12002" : L"10060";
inline constexpr std::wstring_view kMismatchError = L" Error : Server settings INI information mismatch.";

inline std::string Text(const Log& log) {
  std::string text;
  for (const std::wstring_view entry : log) text += Utf8(entry) + "\n\n";
  return text;
}

/// Everything that a check logs when it reads all values in mode one.
inline std::string WholeLog(bool interactive, const Log& comparison) {
  Log entries{kEntriesStart,       kModeOne,    kTagOne.completed, kTagTwo.completed,
              kTagThree.completed, kEntriesEnd, kUpdatesStart};
  if (interactive) entries.insert(entries.begin() + 2, kClientVersion.completed);
  return Text(entries) + Text(comparison) + Text({kUpdatesEnd});
}

inline std::string Told(bool network, bool failed, bool offered, const std::wstring& error_text) {
  return std::string(network ? "network " : "") + (failed ? "failed " : "") + (offered ? "offered" : "") +
         Utf8(error_text);
}

inline std::string Mirrors() {
  return Told(false, g_bCheckFailed, g_bUpdatesAvailable, g_strPatchErrorText);
}

/// A product, its settings and a process before its first check. The product's executable and the icon,
/// beside which the record is, are in different folders.
struct Process {
  const bool interactive;
  Machine machine;
  const std::wstring record = machine.ProductFolder() + L"\\icon\\installedupdates.dat";
  RunState run;
  SheetUpdateCheck sheet{run};
  std::wstring warning, product_version;

  explicit Process(bool by_user, const wchar_t* product = L"15.0.2.5", const std::string& settings = "")
      : interactive(by_user) {
    machine.Install(Layout::one);
    MakeFolder(machine.ProductFolder() + L"\\icon");
    SetRegistryText(UninstallKey(Layout::one), L"DisplayIcon", machine.ProductFolder() + L"\\icon\\Qrt.exe");
    if (product != nullptr) machine.PlaceExecutable(product);
    machine.WriteSettings(settings + "\r\nIGNORE_PATCH_ERROR=maybe\r\n");
    WriteBytes(machine.UpdateList(), kOldList);
    g_nUpdateCheckCount = 0;
    platform::g_nWaitLeftMs = platform::kWaitMs;
    g_bProductInstalled = g_bUpdatesAvailable = false;
    g_bCheckFailed = true;
    g_strPatchErrorText = L" old";
    run.WarnUser = [this](std::wstring_view text) { warning += text; };
    run.ResolveSettingsFile();
    run.WriteRunHeader();
    sheet.WriteRegularRunHeader();
  }
  ~Process() { CHECK(UnknownLines(Log()) == 0); }

  const std::wstring& Log() const { return interactive ? sheet.SheetLogText() : run.LogText(); }
  /// The log behind the header.
  std::string Entries() const { return Utf8(Log().substr(Log().find(kEntriesStart))); }
  std::string BuildLine() const {
    const std::size_t start = Log().find(L"Build Version : ");
    return Utf8(Log().substr(start, Log().find(L'\n', start) - start));
  }
  std::int32_t Checks() const { return interactive ? sheet.SheetCheckCount : g_nUpdateCheckCount; }

  /// Makes a check and returns its results.
  std::string Check() {
    if (interactive) {
      sheet.RunUpdateCheck();
      return Told(false, sheet.SheetCheckFailed, sheet.SheetUpdatesAvailable, sheet.SheetErrorText);
    }
    const CCheckPatch check(run);
    CHECK(Log().ends_with(check.MessageText() + L"\n\n"));
    product_version = check.ProductFileVersion;
    return Told(check.m_bNetworkError, check.m_bCheckFailed, check.m_bUpdatesAvailable, check.m_strErrorText);
  }
};

inline HttpReply List(int status = 200) {
  return Reply(status, "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n");
}

}  // namespace checks
