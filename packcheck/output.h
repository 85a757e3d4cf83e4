#pragma once

#include <string>
#include <vector>

#include "packcheck/report.h"

/// The results as text for people, at most a screen of lines that end in "\n" and are safe on a terminal, or
/// as JSON for programs, one object on a line. Both are ASCII or UTF-8. In names, a byte that is not valid
/// UTF-8 is \x and two digits.
namespace packcheck {

std::string AsText(const Report& report);
std::string AsText(const Comparison& comparison);

/// `file`: the list's name, written when several lists were examined; empty otherwise.
std::string AsJson(const Report& report, const std::string& file);
std::string AsJson(const Comparison& comparison);

}  // namespace packcheck
