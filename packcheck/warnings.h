#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "packcheck/report.h"

namespace packcheck {

/// Adds what the publisher should know of the list and the record to a report that is complete else.
void AddWarnings(std::string_view list, const std::optional<std::wstring>& record, Report& report);

}  // namespace packcheck
