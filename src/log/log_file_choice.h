#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A log file as the folder lists it.
struct LogFileEntry {
  std::wstring name;
  std::uint64_t last_write = 0;  ///< in any unit that grows with time
};

/// The file that a run's log is appended to, as an index into `files` (in enumeration order), or nothing when
/// a new file is to be made: none is there, or exactly two share one time. Of three or more the newest wins,
/// of equally new ones the one enumerated later.
std::optional<std::size_t> ChooseLogFile(const std::vector<LogFileEntry>& files);
