#include "log/run_header.h"

#include "log/activity_log.h"
#include "log/log_texts.h"
#include "platform/system_text.h"
#include "product/identity.h"

std::wstring InitialBuildLine() {
  return std::wstring(identity::kProductLabel).append(log_texts::kBuildVersion);
}

std::wstring RunHeader(bool administrator, std::wstring_view invoke_mode) {
  const std::wstring title(identity::kWindowTitle);
  const std::wstring lines[] = {
      std::wstring(log_texts::kHeaderRule),
      std::wstring(title).append(log_texts::kFileVersion).append(g_strProgramFileVersion),
      std::wstring(title)
          .append(log_texts::kDateTime)
          .append(platform::FormatLocalTime(log_texts::kDateTimeFormat)),
      InitialBuildLine(),
      std::wstring(log_texts::kHeaderRule),
      std::wstring(log_texts::kAppMode)
          .append(administrator ? log_texts::kAdmin : log_texts::kUser)
          .append(log_texts::kUserMode)
          .append(invoke_mode)};
  std::wstring header;
  for (const std::wstring& line : lines) header.append(line).append(L"\n\n");
  return header;
}
