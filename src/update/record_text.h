#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// In bytes. A record names a few packs in a few hundred bytes; a file larger than this counts as unreadable.
inline constexpr std::size_t kRecordSizeLimit = 64 * 1024 * 1024;

/// How many pack names (every section name but the first) occur in the record's text.
std::size_t CountRecordedPacks(const std::vector<std::wstring>& sections, std::wstring_view record);

/// The version at the end of a record that names one pack, e.g. 15027 for "Varnexa15_0_2_7": the four numbers
/// after the product's name, folded with a factor of ten. Nothing when the text does not hold exactly three
/// underscores or lacks the product's name.
std::optional<std::int32_t> ParseRecordVersion(std::wstring_view record);
