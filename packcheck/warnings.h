#pragma once

#include <string_view>
#include <vector>

#include "packcheck/report.h"

namespace packcheck {

/// Adds the warnings to a report that is otherwise complete. `list`: the bytes from which `published` was
/// read.
void AddWarnings(std::string_view list, const Published& published, Report& report);

/// Every code that a warning can have.
const std::vector<std::string>& WarningCodes();

}  // namespace packcheck
