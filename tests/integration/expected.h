#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/text.h"

namespace expected {

/// The entries of a log, written with "|" between them; words in capitals stand for entries that many logs
/// have, a leading "@" for the beginning that the registry readers' entries share.
std::vector<std::wstring> Log(std::wstring_view text);

inline constexpr wchar_t kReadTags[] =
    L"@Reading tag one completed.|@Reading tag two completed.|@Reading tag three completed.";
inline constexpr char kListWithPack[] = "[Update Packs for Versions]\r\n[Varnexa15_0_2_7]\r\n";

}  // namespace expected

/// "WriteFile-112": every call of this function fails with this code for as long as what is returned lives.
std::shared_ptr<void> Refuse(const std::wstring& function_and_code);

/// The log is exactly these entries.
#define CHECK_LOG(log, entries) CHECK(support::LogDifference(log, expected::Log(entries)) == "")
