#include "log/run_header.h"

#include "log/activity_log.h"
#include "log/log_texts.h"
#include "platform/clock.h"
#include "product/identity.h"

std::wstring InitialBuildLine() {
  return std::wstring(identity::kProductLabel).append(log_texts::kBuildVersion);
}

std::array<std::wstring, 6> RunHeaderLines(bool administrator, std::wstring_view invoke_mode) {
  const std::wstring rule(log_texts::kHeaderRule);
  const std::wstring title(identity::kWindowTitle);
  std::wstring mode(log_texts::kAppMode);
  mode.append(administrator ? log_texts::kAdmin : log_texts::kUser).append(log_texts::kUserMode);
  return {rule,
          std::wstring(title).append(log_texts::kFileVersion).append(g_strProgramFileVersion),
          std::wstring(title)
              .append(log_texts::kDateTime)
              .append(platform::FormatLocalTime(log_texts::kDateTimeFormat)),
          InitialBuildLine(),
          rule,
          mode.append(invoke_mode)};
}
