#include "log/log_rules.h"

#include "log/log_texts.h"
#include "text/text.h"

namespace log_rules {

std::wstring Normalise(std::wstring text) {
  text::ReplaceAll(text, L"\n\n\n", L"\n");
  text::ReplaceAll(text, L"\n\n", L"\n");
  text::ReplaceAll(text, L"\n\n", L"\n");
  return text;
}

void ReplaceBuildLine(std::wstring& log, std::wstring_view build_line, std::wstring_view file_version) {
  std::wstring line(build_line);
  text::ReplaceAll(line, log_texts::kNotAvailable, file_version);
  text::ReplaceAll(log, build_line, line);
}

std::string WithCrLf(std::string text) {
  text::ReplaceAll(text, "\n", "\r\n");
  return text;
}

std::string WithLf(std::string text) {
  text::ReplaceAll(text, "\r\n", "\n");
  if (!text.empty() && text.back() != '\n') text += '\n';
  return text;
}

bool IsLogFileName(std::wstring_view name) {
  return name.find(log_texts::kFilePrefix) != std::wstring_view::npos;
}

std::optional<std::size_t> ChooseLogFile(const std::vector<LogFileEntry>& files) {
  if (files.empty()) return std::nullopt;
  if (files.size() == 2 && files[0].last_write == files[1].last_write) return std::nullopt;
  std::size_t newest = 0;
  for (std::size_t i = 1; i < files.size(); ++i) {
    if (files[i].last_write >= files[newest].last_write) newest = i;
  }
  return newest;
}

}  // namespace log_rules
