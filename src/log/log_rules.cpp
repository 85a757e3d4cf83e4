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

std::string WithCrLf(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 16);
  for (char c : text) {
    if (c == '\n') result += '\r';
    result += c;
  }
  return result;
}

std::string WithLf(std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size() + 1);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') continue;
    result += bytes[i];
  }
  if (!result.empty() && result.back() != '\n') result += '\n';
  return result;
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
