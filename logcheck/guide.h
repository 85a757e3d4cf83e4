#pragma once

#include <string>

namespace logcheck {

/// docs/log.md: every text, outcome and code, in Markdown.
std::string Guide();

}  // namespace logcheck
