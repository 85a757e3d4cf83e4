#include "console/json.h"

namespace console {

std::string JsonLine(const Json& value) {
  constexpr int kOneLine = -1;
  return value.dump(kOneLine, ' ', true, Json::error_handler_t::replace) + "\n";
}

}  // namespace console
