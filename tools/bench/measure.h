#pragma once

#include <windows.h>

#include <optional>
#include <string>

/// The end of a measurement: the end of the process, or the moment at which its property sheet is visible and
/// completely painted.
enum class Until { ended, painted };

struct Measure {
  double milliseconds = 0;
  /// Processor time, user and system, without that of servers. 0 without cpu_time.py.
  double processor_milliseconds = 0;
  unsigned kib = 0;        ///< peak of the private memory
  DWORD first_thread = 0;  ///< identifier, as the Wine server's trace shows it
};

/// Runs `program` once up to `until` and ends it. Nothing when it cannot be started or takes longer than a
/// minute.
std::optional<Measure> MeasureRun(const std::wstring& program, const wchar_t* arguments, Until until);

/// Number of libraries that one run loads, up to its end, or for a sheet up to its first wait for input.
unsigned CountLibraries(const std::wstring& program, const wchar_t* arguments);

/// Whether the program contains the utility's sheet. Others are measured without a window only.
bool HasSheet(const std::wstring& program);

/// Milliseconds of a steady clock.
double Now();
/// Peak of a process's private memory, in KiB.
unsigned PeakMemory(HANDLE process);
