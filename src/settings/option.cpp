#include "settings/option.h"

#include <string_view>

#include "platform/profile.h"
#include "settings/settings_texts.h"
#include "text/text.h"

namespace {

/// Section of korsa.ini that holds every key of this program.
constexpr wchar_t kSection[] = L"KORSA_URL";
/// Capacity, in characters, of the buffer that a value is read into.
constexpr unsigned kValueCapacity = 512;

const wchar_t* TextOf(bool value) {
  return value ? settings_texts::kTrue : settings_texts::kFalse;
}

}  // namespace

std::wstring ReadSetting(const std::wstring& settings_file, const wchar_t* key) {
  return platform::ReadProfileText(settings_file, kSection, key, kValueCapacity);
}

OptionText ReadOption(const std::wstring& settings_file, const wchar_t* key) {
  const std::wstring value = ReadSetting(settings_file, key);
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
  platform::WriteProfileText(settings_file, kSection, key, TextOf(value));
}

OptionText RepairOption(const std::wstring& settings_file, const wchar_t* key, bool value,
                        const wchar_t* read_key, OptionText read) {
  OptionText found = read;
  platform::WriteProfileText(settings_file, kSection, key, TextOf(value), [&](const std::wstring& copy) {
    found = ReadOption(copy, read_key);
    return found == read;
  });
  return found;
}
