#include "settings/update_settings.h"

#include "product/identity.h"
#include "settings/option.h"
#include "settings/settings_texts.h"
#include "text/text.h"

void UpdateSettings::ReadUpdateSettings(const std::wstring& settings_file, bool& update_loc_url_mode,
                                        WriteBack write_back) {
  UpdateLocationSet = true;
  if (settings_file.empty()) {
    UpdateLocation = identity::kDefaultUpdateHost;
    IgnorePatchError = false;
    update_loc_url_mode = false;
    TimeoutMs = kDefaultTimeoutMs;
    return;
  }

  // UPDATE_LOC_URL takes precedence over UPDATE_LOC and is trimmed only afterwards. A value of blanks
  // therefore selects the default host, even when UPDATE_LOC is set.
  const std::wstring url = ReadSetting(settings_file, settings_texts::kUpdateLocUrlKey);
  const std::wstring host = ReadSetting(settings_file, settings_texts::kUpdateLocKey);
  if (!url.empty()) update_loc_url_mode = true;
  UpdateLocation = text::Trim(url.empty() ? host : url);
  if (UpdateLocation.empty()) {
    UpdateLocation = identity::kDefaultUpdateHost;
    update_loc_url_mode = false;
  }

  constexpr auto key = settings_texts::kIgnorePatchErrorKey;
  const OptionText ignore = write_back == WriteBack::defaults ? ReadOptionOrRepair(settings_file, key, false)
                                                              : ReadOption(settings_file, key);
  IgnorePatchError = ignore == OptionText::yes;

  const std::wstring timeout_value = ReadSetting(settings_file, settings_texts::kTimeoutKey);
  const std::wstring_view timeout = text::Trim(timeout_value);
  TimeoutMs = timeout.empty() ? kDefaultTimeoutMs : text::SecondsToMilliseconds(text::ParseDecimal(timeout));
}
