#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace console {

/// Keys stay in the order in which they were added.
using Json = nlohmann::ordered_json;

/// `value` on one line that ends in "\n". Characters that are not ASCII are escaped, so that the line is safe
/// on a terminal and does not depend on a code page. A malformed UTF-8 sequence becomes U+FFFD.
std::string JsonLine(const Json& value);

}  // namespace console
