#include "log/log_file_choice.h"

std::optional<std::size_t> ChooseLogFile(const std::vector<LogFileEntry>& files) {
  if (files.empty()) return std::nullopt;
  if (files.size() == 2 && files[0].last_write == files[1].last_write) return std::nullopt;
  std::size_t newest = 0;
  for (std::size_t i = 1; i < files.size(); ++i) {
    if (files[i].last_write >= files[newest].last_write) newest = i;
  }
  return newest;
}
