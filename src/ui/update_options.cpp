#include "ui/update_options.h"

#include "settings/option.h"
#include "settings/settings_texts.h"

using settings_texts::kCheckUpdatesKey;
using settings_texts::kIgnorePatchErrorKey;

void UpdateOptions::LoadUpdateOptions(const std::wstring& settings_file) {
  if (settings_file.empty()) return;
  m_bSettingsFileKnown = true;
  m_strSettingsFile = settings_file;

  const OptionText check = ReadOptionOrRepair(settings_file, kCheckUpdatesKey, true);
  m_bCheckOnStartup = check == OptionText::no ? 0 : 1;

  OptionText hide = ReadOption(settings_file, kIgnorePatchErrorKey);
  if (hide == OptionText::missing) {
    hide = RepairOption(settings_file, kIgnorePatchErrorKey, false, kIgnorePatchErrorKey, hide);
  }
  m_bHideNetworkErrors = hide == OptionText::yes ? 1 : 0;
  // This writes the other key on purpose: a malformed value switches off the start-up check, and stays in
  // the file so that the user sees it.
  if (hide == OptionText::malformed) {
    RepairOption(settings_file, kCheckUpdatesKey, false, kIgnorePatchErrorKey, hide);
  }
}

void UpdateOptions::WriteCheckUpdatesKey(bool value) const {
  if (m_bSettingsFileKnown) WriteOption(m_strSettingsFile, kCheckUpdatesKey, value);
}

void UpdateOptions::WriteIgnorePatchErrorKey(bool value) const {
  if (m_bSettingsFileKnown) WriteOption(m_strSettingsFile, kIgnorePatchErrorKey, value);
}
