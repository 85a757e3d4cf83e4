#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "console/text.h"

namespace console {

/// Keys stay in the order in which they were added.
using Json = nlohmann::ordered_json;

/// `value` on one line that ends in "\n". Characters that are not ASCII are escaped, so that the line is safe
/// on a terminal and does not depend on a code page. A malformed UTF-8 sequence becomes U+FFFD.
inline std::string JsonLine(const Json& value) {
  constexpr int kOneLine = -1;
  return value.dump(kOneLine, ' ', true, Json::error_handler_t::replace) + "\n";
}

}  // namespace console

/// Makes a struct convert to Json, with these fields in this order: JSON_OF(Type, field, …) in its namespace.
/// The library's own macros (NLOHMANN_DEFINE_TYPE_…) of version 3.11 know neither ordered_json nor types that
/// are only written.
#define JSON_OF(Type, ...)                                                           \
  inline void to_json(console::Json& nlohmann_json_j, const Type& nlohmann_json_t) { \
    NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_TO, __VA_ARGS__))         \
  }

/// Wide text becomes UTF-8 (Utf8).
template <>
struct nlohmann::adl_serializer<std::wstring> {
  static void to_json(console::Json& json, const std::wstring& text) { json = console::Utf8(text); }
};

/// Nothing becomes null.
template <class Value>
struct nlohmann::adl_serializer<std::optional<Value>> {
  static void to_json(console::Json& json, const std::optional<Value>& value) {
    json = value ? console::Json(*value) : console::Json();
  }
};
