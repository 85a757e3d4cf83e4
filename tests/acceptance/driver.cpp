#include "acceptance/driver.h"

#include <tlhelp32.h>

#include <algorithm>
#include <filesystem>

#include "platform/folders.h"
#include "resource.h"

namespace {

constexpr wchar_t kFolder[] = L"C:\\tavrel-acceptance";
constexpr wchar_t kDialogClass[] = L"#32770";

BOOL CALLBACK AddWindow(HWND window, LPARAM windows) {
  reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
  return TRUE;
}

/// The control of a dialog or of one of the pages in it.
HWND Item(HWND dialog, int id) {
  if (dialog == nullptr) return nullptr;
  if (const HWND item = GetDlgItem(dialog, id)) return item;
  for (const HWND page : WindowsOfClass(dialog, kDialogClass)) {
    if (const HWND item = GetDlgItem(page, id)) return item;
  }
  return nullptr;
}

}  // namespace

InstalledMachine::InstalledMachine()
    : Installation(kFolder, platform::DocumentsFolder(), platform::CommonAppDataFolder()) {
  support::MakeFolder(LogFolder());
  support::CopyOver(TAVREL_UTILITY, program);
  PlaceExecutable(L"15.0.2.5");
  Install(support::Layout::two);
  WriteSettings("CHECKUPDATES=TRUE\r\nIGNORE_PATCH_ERROR=FALSE\r\n");
}

std::wstring InstalledMachine::File(const std::wstring& name) const {
  return name == L"korsa.ini" ? SettingsFile() : root_ + L"\\" + name;
}

std::wstring InstalledMachine::LogFile() const {
  const std::vector<std::wstring> names = support::FileNames(LogFolder());
  return names.size() == 1 ? LogFolder() + L"\\" + names[0] : std::wstring();
}

Run::Run(const std::wstring& program, const std::wstring& arguments) {
  std::wstring command = L"\"" + program + L"\" " + arguments;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                 &process_);
}

Run::~Run() {
  TerminateProcess(process_.hProcess, 99);
  WaitForSingleObject(process_.hProcess, kLongestWaitMs);
  CloseHandle(process_.hThread);
  CloseHandle(process_.hProcess);
}

std::string Run::End() const {
  DWORD code = 0;
  if (WaitForSingleObject(process_.hProcess, kLongestWaitMs) != WAIT_OBJECT_0) {
    return "runs on, showing: " + WindowText(Control(IDC_MESSAGE));
  }
  GetExitCodeProcess(process_.hProcess, &code);
  return "exit code " + std::to_string(code);
}

bool Run::Answered() const {
  const HWND sheet = Sheet(), message = Item(sheet, IDC_MESSAGE);
  wchar_t start[2];
  const bool told = WaitUntil([&] { return InternalGetWindowText(message, start, 2) > 0; });
  Idle();
  Ask(message, WM_NULL);
  SetForegroundWindow(sheet);
  return told && WaitUntil([&] { return GetForegroundWindow() == sheet; });
}

HWND Run::Find(bool sheet, HWND other) const {
  HWND found = nullptr;
  const auto wanted = [&](HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process == process_.dwProcessId && window != other && IsWindowVisible(window) &&
           sheet == (Item(window, IDC_MESSAGE) != nullptr);
  };
  WaitUntil([&] {
    const std::vector<HWND> dialogs = WindowsOfClass(nullptr, kDialogClass);
    const auto dialog = std::find_if(dialogs.begin(), dialogs.end(), wanted);
    if (dialog != dialogs.end()) found = *dialog;
    return found != nullptr;
  });
  return found;
}

HWND Run::Control(int id) const {
  return Item(Sheet(), id);
}

std::set<std::wstring> Run::Libraries() const {
  std::set<std::wstring> names;
  const platform::UniqueSnapshot snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, process_.dwProcessId));
  MODULEENTRY32W module{};
  module.dwSize = sizeof module;
  for (BOOL found = Module32FirstW(snapshot.get(), &module); found;
       found = Module32NextW(snapshot.get(), &module)) {
    CharLowerW(module.szModule);
    names.insert(std::filesystem::path(module.szModule).stem().wstring());
  }
  return names;
}

bool WaitUntil(const std::function<bool()>& condition, DWORD milliseconds) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  while (!condition()) {
    if (GetTickCount64() >= end) return false;
    Sleep(10);
  }
  return true;
}

std::vector<HWND> WindowsOfClass(HWND parent, const std::wstring& class_name) {
  // FindWindowExW could compare the class, but the server of Wine 10 crashes when it compares the class of a
  // window that is being destroyed.
  std::vector<HWND> windows;
  const auto list = reinterpret_cast<LPARAM>(&windows);
  if (parent == nullptr) {
    EnumWindows(AddWindow, list);
  } else {
    EnumChildWindows(parent, AddWindow, list);
  }
  std::erase_if(windows, [&class_name](HWND window) {
    wchar_t name[32] = L"";
    GetClassNameW(window, name, std::size(name));
    return name != class_name;
  });
  return windows;
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
  return support::Utf8(text);
}

void PressMouse(HWND window) {
  RECT area{};
  GetWindowRect(window, &area);
  SetCursorPos((area.left + area.right) / 2, (area.top + area.bottom) / 2);
  for (const DWORD event : {DWORD{MOUSEEVENTF_LEFTDOWN}, DWORD{MOUSEEVENTF_LEFTUP}})
    mouse_event(event, 0, 0, 0, 0);
}

void Press(const std::vector<BYTE>& keys) {
  for (auto key = keys.begin(); key != keys.end(); ++key) keybd_event(*key, 0, 0, 0);
  for (auto key = keys.rbegin(); key != keys.rend(); ++key) keybd_event(*key, 0, KEYEVENTF_KEYUP, 0);
}
