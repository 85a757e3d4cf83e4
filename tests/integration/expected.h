#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "support/text.h"

namespace expected {

/// A log, its entries written with "|" between them: words of log_words.txt stand for entries that many
/// logs have, a leading "..." for the beginning that the registry readers' entries share, "MESSAGE 32" for
/// the system's text of that error. Another word in capitals is refused.
std::wstring Log(std::wstring_view text);

}  // namespace expected

/// While the returned object exists, with "WriteFile-112" every call of this function fails with this code,
/// with "held-1" the file is open and shared as the number says. Nothing happens for an empty text; any other
/// text is refused.
std::shared_ptr<void> Obstruct(const std::wstring& what, const std::wstring& file = {});

/// The log is exactly these entries.
#define CHECK_LOG(log, entries) CHECK(support::Utf8(log) == support::Utf8(expected::Log(entries)))
