#pragma once

#include <string>

namespace logcheck {

/// The part of docs/log.md that lists every outcome, text and code, in Markdown.
std::string Guide();

}  // namespace logcheck
