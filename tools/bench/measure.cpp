// measure.exe PROGRAM [2]: prints the milliseconds from the start of PROGRAM to its end, or without "2" until
// its property sheet is visible and painted, and its peak memory in KiB.
#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

#include "resource.h"

namespace {

constexpr std::chrono::seconds kLongestRun(60);

struct Sheet {
  DWORD process;
  bool has_button = false, is_unpainted = false;
};

BOOL CALLBACK LookAtWindow(HWND window, LPARAM data) {
  Sheet& sheet = *reinterpret_cast<Sheet*>(data);
  DWORD owner = 0;
  GetWindowThreadProcessId(window, &owner);
  if (owner != sheet.process || !IsWindowVisible(window)) return TRUE;
  if (GetDlgCtrlID(window) == IDC_INSTALL) sheet.has_button = true;
  if (GetUpdateRect(window, nullptr, FALSE)) sheet.is_unpainted = true;
  if (GetParent(window) == nullptr) EnumChildWindows(window, LookAtWindow, data);
  return TRUE;
}

bool IsPainted(DWORD process) {
  Sheet sheet{.process = process};
  EnumWindows(LookAtWindow, reinterpret_cast<LPARAM>(&sheet));
  return sheet.has_button && !sheet.is_unpainted;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count < 2) return 2;
  const bool until_end = count > 2;
  std::wstring command = std::wstring(L"\"").append(arguments[1]).append(until_end ? L"\" 2" : L"\"");
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION run{};
  const auto began = std::chrono::steady_clock::now();
  const auto passed = [&] { return std::chrono::steady_clock::now() - began; };
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &run)) {
    std::fprintf(stderr, "measure: %ls does not start\n", arguments[1]);
    return 1;
  }
  SIZE_T memory = 0;
  bool reached = false;
  while (!reached && passed() < kLongestRun) {
    // Wine reports the memory of a process only while it runs.
    PROCESS_MEMORY_COUNTERS counters{};
    K32GetProcessMemoryInfo(run.hProcess, &counters, sizeof counters);
    memory = std::max<SIZE_T>(memory, counters.PeakPagefileUsage);
    const bool ended = WaitForSingleObject(run.hProcess, 1) == WAIT_OBJECT_0;
    reached = until_end ? ended : IsPainted(run.dwProcessId);
  }
  const std::chrono::duration<double, std::milli> took = passed();
  TerminateProcess(run.hProcess, 0);
  if (!reached) std::fprintf(stderr, "measure: %ls did not get there in a minute\n", arguments[1]);
  std::printf("%.2f\t%lu\n", took.count(), static_cast<unsigned long>(memory >> 10));
  return reached ? 0 : 1;
}
