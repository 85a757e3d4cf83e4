#include "measure.h"

#include <psapi.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "acceptance/driver.h"
#include "resource.h"

namespace {

constexpr DWORD kLongestRunMs = 60000;
/// Longest wait for the processor time of an ended process.
constexpr DWORD kLongestReapingMs = 500;

struct Started {
  platform::UniqueKernelHandle process, thread;
  DWORD id = 0, first_thread = 0;
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
  return {.process = platform::UniqueKernelHandle(created.hProcess),
          .thread = platform::UniqueKernelHandle(created.hThread),
          .id = created.dwProcessId,
          .first_thread = created.dwThreadId};
}

/// Processor time of all processes that cpu_time.py has seen end; nothing without it.
std::optional<double> EndedProcessesTime() {
  const char* const path = std::getenv("TAVREL_CPU_TIME");
  if (path == nullptr) return std::nullopt;
  std::ifstream file("Z:" + std::string(path));
  double microseconds = 0;
  file >> microseconds;
  return microseconds / 1000;
}

/// Waits until cpu_time.py has added the processor time of the process that has just ended.
double TimeOfEndedProcess(std::optional<double> before) {
  if (!before) return 0;
  for (DWORD waited = 0; waited < kLongestReapingMs && EndedProcessesTime() == before; ++waited) Sleep(1);
  return *EndedProcessesTime() - *before;
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

std::optional<Measure> MeasureRun(const std::wstring& program, const wchar_t* arguments, Until until) {
  const std::optional<double> processor = EndedProcessesTime();
  const double began = Now();
  const Started run = Start(program, arguments, 0);
  if (!run.process) return std::nullopt;
  Measure measure{.first_thread = run.first_thread};
  bool reached = false;
  while (!reached && Now() - began < kLongestRunMs) {
    // Wine reports the memory of a process only while it runs.
    measure.kib = std::max(measure.kib, PeakMemory(run.process.get()));
    reached = WaitForSingleObject(run.process.get(), 1) == WAIT_OBJECT_0;
    if (until == Until::painted) reached = IsPainted(run.id);
  }
  measure.milliseconds = Now() - began;
  TerminateProcess(run.process.get(), 0);
  WaitForSingleObject(run.process.get(), kLongestRunMs);
  measure.processor_milliseconds = TimeOfEndedProcess(processor);
  return reached ? std::optional(measure) : std::nullopt;
}

unsigned CountLibraries(const std::wstring& program, const wchar_t* arguments) {
  constexpr DWORD kQuietMs = 2000;
  const Started run = Start(program, arguments, DEBUG_ONLY_THIS_PROCESS);
  unsigned libraries = 0;
  for (bool ended = !run.process; !ended;) {
    DEBUG_EVENT event{};
    // A program without events for so long waits for input.
    if (!WaitForDebugEvent(&event, kQuietMs) && !TerminateProcess(run.process.get(), 0)) break;
    if (event.dwDebugEventCode == LOAD_DLL_DEBUG_EVENT) ++libraries;
    ended = event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT;
    ContinueDebugEvent(event.dwProcessId, event.dwThreadId, DBG_CONTINUE);
  }
  return libraries;
}

bool HasSheet(const std::wstring& program) {
  const HMODULE module = LoadLibraryExW(program.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  if (module == nullptr) return false;
  const bool found = FindResourceW(module, MAKEINTRESOURCEW(IDD_UPDATES), RT_DIALOG) != nullptr;
  FreeLibrary(module);
  return found;
}
