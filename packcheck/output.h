#pragma once

#include <string>

#include "packcheck/report.h"

namespace packcheck {

/// The report for a person to read; lines that end in "\n".
std::string AsText(const Report& report);
/// The report as one JSON object, in UTF-8, on a line of its own. In names, a byte above 0x7F that no
/// encoding explains stands as \x and two digits, in both forms.
std::string AsJson(const Report& report);

}  // namespace packcheck
