#include "measure.h"

#include <psapi.h>

#include <cstdio>
#include <cwchar>

#include "acceptance/driver.h"
#include "resource.h"

namespace {

constexpr DWORD kLongestRunMs = 60000;
/// Until the parent of an ended process has taken over its processor time.
constexpr DWORD kReapingMs = 10;
/// One unit of the processor times of /proc, in milliseconds.
constexpr double kTickMs = 10;

struct Started {
  platform::UniqueKernelHandle process, thread;
  DWORD id = 0;
};

Started Start(const std::wstring& program, const wchar_t* arguments, DWORD flags) {
  std::wstring command = L"\"" + program + L"\" " + arguments;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION created{};
  if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, flags, nullptr, nullptr,
                      &start, &created)) {
    return {};
  }
  return {platform::UniqueKernelHandle(created.hProcess), platform::UniqueKernelHandle(created.hThread),
          created.dwProcessId};
}

/// Processor time of all processes of the sandbox that have ended: Wine does not tell those of another
/// process, but what has ended is its first process's child. Rounded down to ticks, so that only the mean of
/// many tells.
double EndedProcessesTime() {
  std::FILE* file = _wfopen(L"Z:\\proc\\1\\stat", L"r");
  if (file == nullptr) return 0;
  unsigned long user = 0, system = 0;
  // The name in parentheses, the state, eleven numbers, and the two of the children.
  const int read = std::fscanf(
      file, "%*d (%*[^)]) %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %*u %*u %lu %lu", &user, &system);
  std::fclose(file);
  return read == 2 ? static_cast<double>(user + system) * kTickMs : 0;
}

BOOL CALLBACK LookForUnpainted(HWND window, LPARAM all_painted) {
  if (IsWindowVisible(window) && GetUpdateRect(window, nullptr, FALSE))
    *reinterpret_cast<bool*>(all_painted) = false;
  return TRUE;
}

bool IsPainted(DWORD process) {
  HWND sheet = nullptr;
  while ((sheet = FindWindowExW(nullptr, sheet, WC_DIALOG, nullptr)) != nullptr) {
    DWORD owner = 0;
    GetWindowThreadProcessId(sheet, &owner);
    if (owner == process && IsWindowVisible(sheet)) break;
  }
  const HWND page = FindWindowExW(sheet, nullptr, WC_DIALOG, nullptr);
  if (sheet == nullptr || page == nullptr || !IsWindowVisible(GetDlgItem(page, IDC_INSTALL))) return false;
  bool painted = !GetUpdateRect(sheet, nullptr, FALSE);
  EnumChildWindows(sheet, LookForUnpainted, reinterpret_cast<LPARAM>(&painted));
  return painted;
}

}  // namespace

double Now() {
  LARGE_INTEGER count, frequency;
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(count.QuadPart) * 1000.0 / static_cast<double>(frequency.QuadPart);
}

unsigned PeakMemory(HANDLE process) {
  PROCESS_MEMORY_COUNTERS counters{};
  K32GetProcessMemoryInfo(process, &counters, sizeof counters);
  return static_cast<unsigned>(counters.PeakPagefileUsage >> 10);
}

std::optional<Measure> Play(const std::wstring& program, const wchar_t* arguments, Until until) {
  const double processor = EndedProcessesTime();
  const double began = Now();
  const Started run = Start(program, arguments, 0);
  if (!run.process) return std::nullopt;
  Measure measure;
  bool there = false;
  while (!there && Now() - began < kLongestRunMs) {
    // What a process took can be asked only while it runs.
    measure.kib = std::max(measure.kib, PeakMemory(run.process.get()));
    there = WaitForSingleObject(run.process.get(), 1) == WAIT_OBJECT_0;
    if (until == Until::painted) there = IsPainted(run.id);
  }
  measure.milliseconds = Now() - began;
  TerminateProcess(run.process.get(), 0);
  WaitForSingleObject(run.process.get(), kLongestRunMs);
  Sleep(kReapingMs);
  measure.processor_milliseconds = EndedProcessesTime() - processor;
  return there ? std::optional(measure) : std::nullopt;
}

unsigned CountLibraries(const std::wstring& program, const wchar_t* arguments) {
  constexpr DWORD kQuietMs = 2000;
  const Started run = Start(program, arguments, DEBUG_ONLY_THIS_PROCESS);
  unsigned libraries = 0;
  for (bool ended = !run.process; !ended;) {
    DEBUG_EVENT event{};
    // What is quiet for so long waits for input.
    if (!WaitForDebugEvent(&event, kQuietMs) && !TerminateProcess(run.process.get(), 0)) break;
    if (event.dwDebugEventCode == LOAD_DLL_DEBUG_EVENT) ++libraries;
    ended = event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT;
    ContinueDebugEvent(event.dwProcessId, event.dwThreadId, DBG_CONTINUE);
  }
  return libraries;
}
