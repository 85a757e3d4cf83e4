#include "settings/option.h"

#include <string_view>

#include "platform/profile.h"
#include "settings/settings_texts.h"
#include "settings/update_settings.h"
#include "text/text.h"

namespace {

const wchar_t* TextOf(bool value) {
  return value ? settings_texts::kTrue : settings_texts::kFalse;
}

}  // namespace

OptionText ReadOption(const std::wstring& settings_file, const wchar_t* key) {
  const std::wstring value =
      platform::ReadProfileText(settings_file, kSettingsSection, key, kSettingsValueCapacity);
  const std::wstring_view option = text::Trim(value);
  if (option.empty()) return OptionText::missing;
  if (!text::IsBooleanText(option)) return OptionText::malformed;
  return text::IsTrueText(option) ? OptionText::yes : OptionText::no;
}

OptionText ReadOptionOrRepair(const std::wstring& settings_file, const wchar_t* key, bool value) {
  const OptionText read = ReadOption(settings_file, key);
  if (read == OptionText::yes || read == OptionText::no) return read;
  return RepairOption(settings_file, key, value, key, read);
}

void WriteOption(const std::wstring& settings_file, const wchar_t* key, bool value) {
  platform::WriteProfileText(settings_file, kSettingsSection, key, TextOf(value));
}

OptionText RepairOption(const std::wstring& settings_file, const wchar_t* key, bool value,
                        const wchar_t* read_key, OptionText read) {
  OptionText found = read;
  platform::WriteProfileText(settings_file, kSettingsSection, key, TextOf(value),
                             [&](const std::wstring& copy) {
                               found = ReadOption(copy, read_key);
                               return found == read;
                             });
  return found;
}
