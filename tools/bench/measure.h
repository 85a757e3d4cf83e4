#pragma once

#include <windows.h>

#include <optional>
#include <string>

/// Up to where a run is measured: the end of its process, or the moment at which its property sheet is
/// visible and nothing in it waits to be painted.
enum class Until { ended, painted };

struct Measure {
  double milliseconds = 0;
  /// Processor time, user and system, without what servers spent for the run. 0 where the host does not say.
  double processor_milliseconds = 0;
  unsigned kib = 0;  ///< private memory at most
};

/// Plays `program` once and ends it. Nothing when it could not be started or did not come so far in a minute.
std::optional<Measure> Play(const std::wstring& program, const wchar_t* arguments, Until until);

/// Libraries that one run loads, up to its end or for a sheet to its first wait for input.
unsigned CountLibraries(const std::wstring& program, const wchar_t* arguments);

/// Milliseconds of a steady clock.
double Now();
/// Private memory of a process at most, in KiB.
unsigned PeakMemory(HANDLE process);
