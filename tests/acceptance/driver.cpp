#include "acceptance/driver.h"

#include <prsht.h>

#include <vector>

#include "platform/folders.h"
#include "resource.h"
#include "support/text.h"

using namespace support;

namespace {

constexpr DWORD kLongestWaitMs = 10000;
constexpr DWORD kDialogAtom = 32770;
using Match = std::function<bool(HWND)>;

/// The first window in front that matches: of all descendants of `parent`, without one of the main windows.
HWND FindWindowBy(HWND parent, const Match& match) {
  std::pair<const Match&, HWND> search{match, nullptr};
  const auto visit = [](HWND window, LPARAM parameter) WINAPI -> BOOL {
    auto& [matches, found] = *reinterpret_cast<std::pair<const Match&, HWND>*>(parameter);
    if (matches(window)) found = window;
    return found == nullptr;
  };
  const auto parameter = reinterpret_cast<LPARAM>(&search);
  parent == nullptr ? EnumWindows(visit, parameter) : EnumChildWindows(parent, visit, parameter);
  return search.second;
}

std::wstring SettingsFolder() {
  return platform::DocumentsFolder() + L"\\Varnexa\\QRT15\\";
}

std::wstring LogFolder() {
  return platform::CommonAppDataFolder() + L"\\Varnexa\\QRT15\\";
}

}  // namespace

Stage::Stage() {
  for (const std::wstring& made :
       {folder, SettingsFolder(), LogFolder(), folder + L"\\program", folder + L"\\product"}) {
    RemoveTree(made);
    MakeFolder(made);
  }
  CopyFileW(TAVREL_UTILITY, program.c_str(), FALSE);
  PlaceProduct(L"15.0.2.5");
  SetFact(L"Version", L"15.0");
  SetFact(L"Installpath", folder + L"\\product");
  SetFact(L"DisplayVersion", L"15.0");
  SetFact(L"DisplayIcon", product);
  SetFact(L"URLUpdateInfo", L"http://updates.varnexa.example/qrt15/updates.ini");
  WriteSettings("CHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\nTIMEOUT=20\r\n");
}

void Stage::PlaceProduct(const std::wstring& version) const {
  CopyFileW(StandIn(version).c_str(), product.c_str(), FALSE);
}

void Stage::SetFact(const std::wstring& name, std::wstring_view text) const {
  const bool of_maker = name == L"Version" || name == L"Installpath";
  const std::wstring key = of_maker ? MakerKey(Layout::two) : UninstallKey(Layout::two);
  SetRegistryText(key, name.c_str(), text);
  if (text.empty()) RemoveRegistryValue(key, name.c_str());
}

void Stage::WriteSettings(std::string_view lines) const {
  WriteBytes(SettingsFolder() + L"korsa.ini", std::string("[KORSA_URL]\r\n").append(lines));
}

std::string Stage::Setting(const wchar_t* key) const {
  const std::wstring file = SettingsFolder() + L"korsa.ini";
  wchar_t text[64];
  WritePrivateProfileStringW(nullptr, nullptr, nullptr, file.c_str());  // forgets what was read before
  GetPrivateProfileStringW(L"KORSA_URL", key, L"", text, 64, file.c_str());
  return Utf8(text);
}

std::wstring Stage::LogFile() const {
  const std::vector<std::wstring> names = FileNames(LogFolder());
  return names.size() == 1 ? LogFolder() + names[0] : std::wstring();
}

Run::Run(const std::wstring& program, const std::wstring& arguments)
    : job_(CreateJobObjectW(nullptr, nullptr)) {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limit{};
  limit.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job_, JobObjectExtendedLimitInformation, &limit, sizeof limit);
  std::wstring command = L"\"" + program + L"\" " + arguments;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr, nullptr,
                 &start, &process_);
  AssignProcessToJobObject(job_, process_.hProcess);
  ResumeThread(process_.hThread);
}

Run::~Run() {
  TerminateProcess(process_.hProcess, 99);
  WaitForSingleObject(process_.hProcess, kLongestWaitMs);
  for (const HANDLE handle : {process_.hThread, process_.hProcess, job_}) CloseHandle(handle);
}

bool Run::Ended() const {
  DWORD code = 1;
  return WaitForSingleObject(process_.hProcess, kLongestWaitMs) == WAIT_OBJECT_0 &&
         GetExitCodeProcess(process_.hProcess, &code) && code == 0;
}

bool Run::Answered() const {
  const HWND message = Control(IDC_MESSAGE);
  wchar_t start[2];
  const bool told = WaitUntil([&] { return InternalGetWindowText(message, start, 2) > 0; });
  WaitForInputIdle(process_.hProcess, kLongestWaitMs);
  Ask(message, WM_NULL);
  const HWND sheet = Sheet();
  SetForegroundWindow(sheet);
  return told && WaitUntil([&] { return GetForegroundWindow() == sheet; });
}

bool Run::IsMainWindow(HWND window) const {
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  return process == process_.dwProcessId && IsWindowVisible(window);
}

bool Run::ShowsWindow() const {
  return FindWindowBy(nullptr, [&](HWND window) { return IsMainWindow(window); }) != nullptr;
}

HWND Run::FindDialog(bool sheet, HWND other) const {
  return FindWindowBy(nullptr, [&](HWND window) {
    return IsMainWindow(window) && window != other && GetClassLongW(window, GCW_ATOM) == kDialogAtom &&
           sheet == (Descendant(window, IDC_MESSAGE) != nullptr);
  });
}

HWND Run::Dialog(HWND other) const {
  HWND dialog = nullptr;
  WaitUntil([&] { return (dialog = FindDialog(false, other)) != nullptr; });
  return dialog;
}

HWND Run::Sheet() const {
  HWND sheet = nullptr;
  WaitUntil([&] { return (sheet = FindDialog(true, nullptr)) != nullptr; });
  return sheet;
}

HWND Run::Control(int id) const {
  return Descendant(Sheet(), id);
}

std::string Run::Text(int id) const {
  return WindowText(Control(id));
}

std::string Run::ShowLog() const {
  Ask(Sheet(), PSM_SETCURSEL, 1);
  return Text(IDC_LOG_TEXT);
}

void Run::Keys(std::initializer_list<WORD> keys) const {
  std::vector<INPUT> strokes(keys.size() * 2);
  for (std::size_t i = 0; i < strokes.size(); ++i) {
    const bool down = i < keys.size();
    strokes[i].type = INPUT_KEYBOARD;
    strokes[i].ki.wVk = keys.begin()[down ? i : strokes.size() - 1 - i];
    strokes[i].ki.dwFlags = down ? 0 : KEYEVENTF_KEYUP;
  }
  SendInput(static_cast<UINT>(strokes.size()), strokes.data(), sizeof(INPUT));
}

bool WaitUntil(const std::function<bool()>& condition) {
  const ULONGLONG end = GetTickCount64() + kLongestWaitMs;
  while (!condition()) {
    if (GetTickCount64() >= end) return false;
    Sleep(10);
  }
  return true;
}

HWND Descendant(HWND parent, int id) {
  if (parent == nullptr) return nullptr;
  return FindWindowBy(parent, [id](HWND window) { return GetDlgCtrlID(window) == id; });
}

LRESULT Ask(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  DWORD_PTR result = 0;
  SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, kLongestWaitMs, &result);
  return static_cast<LRESULT>(result);
}

std::string WindowText(HWND window) {
  std::wstring text(65536, L'\0');
  const auto buffer = reinterpret_cast<LPARAM>(text.data());
  text.resize(static_cast<std::size_t>(Ask(window, WM_GETTEXT, text.size(), buffer)));
  std::erase(text, L'\r');
  return Utf8(text);
}

std::string BoxText(HWND box) {
  std::string text = WindowText(box) + "|";
  for (HWND child = GetWindow(box, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
    if ((Ask(child, WM_GETDLGCODE) & DLGC_STATIC) != 0) text += WindowText(child);  // the icon has none
  }
  return text;
}

bool Answer(HWND box, int button) {
  PostMessageW(GetDlgItem(box, button), BM_CLICK, 0, 0);
  return WaitUntil([box] { return !IsWindowVisible(box); });
}
