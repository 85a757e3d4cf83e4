#include "ui/update_options.h"

#include <string_view>

#include "platform/profile.h"
#include "settings/settings_texts.h"
#include "settings/update_settings.h"
#include "text/text.h"

namespace {

enum class OptionText { missing, yes, no, malformed };

OptionText ReadOption(const std::wstring& settings_file, const wchar_t* key) {
  const std::wstring value =
      platform::ReadProfileText(settings_file, kSettingsSection, key, kSettingsValueCapacity);
  const std::wstring_view option = text::Trim(value);
  if (option.empty()) return OptionText::missing;
  if (!text::IsBooleanText(option)) return OptionText::malformed;
  return text::IsTrueText(option) ? OptionText::yes : OptionText::no;
}

}  // namespace

void UpdateOptions::LoadUpdateOptions(const std::wstring& settings_file) {
  if (settings_file.empty()) return;
  m_bSettingsFileKnown = true;
  m_strSettingsFile = settings_file;

  const OptionText check = ReadOption(settings_file, settings_texts::kCheckUpdatesKey);
  m_bCheckOnStartup = check == OptionText::no ? 0 : 1;
  if (check == OptionText::missing || check == OptionText::malformed) WriteCheckUpdatesKey(true);

  const OptionText hide = ReadOption(settings_file, settings_texts::kIgnorePatchErrorKey);
  m_bHideNetworkErrors = hide == OptionText::yes ? 1 : 0;
  if (hide == OptionText::missing) WriteIgnorePatchErrorKey(false);
  // On purpose the other key: a value that cannot be understood switches the check at start-up off and stays
  // in the file for whoever wrote it.
  if (hide == OptionText::malformed) WriteCheckUpdatesKey(false);
}

void UpdateOptions::WriteCheckUpdatesKey(bool value) {
  Write(settings_texts::kCheckUpdatesKey, value);
}

void UpdateOptions::WriteIgnorePatchErrorKey(bool value) {
  Write(settings_texts::kIgnorePatchErrorKey, value);
}

void UpdateOptions::Write(const wchar_t* key, bool value) {
  if (!m_bSettingsFileKnown) return;
  platform::WriteProfileText(m_strSettingsFile, kSettingsSection, key,
                             value ? settings_texts::kTrue : settings_texts::kFalse);
}
