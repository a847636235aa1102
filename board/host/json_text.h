// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_JSON_TEXT_H
#define KESTREL_BOARD_HOST_JSON_TEXT_H

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

#include "host/error.h"

namespace kestrel::board {

/// JSON as text. Names come from programs and from the command line, so they need not be UTF-8;
/// what is not is replaced.
inline std::string ToText(const nlohmann::json& value, int indent = -1) {
  return value.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

/// The integer that `object` has under `key`. Throws UsageError for one that `Number` cannot hold
/// and for what is no integer, and json::exception where there is nothing.
template <typename Number>
Number IntegerIn(const nlohmann::json& object, const char* key) {
  const nlohmann::json& value = object.at(key);
  // What is beyond the largest signed number would become negative below.
  const bool fits = value.is_number_integer() &&
                    (!value.is_number_unsigned() || value.get<uint64_t>() <= INT64_MAX) &&
                    value.get<int64_t>() >= int64_t{std::numeric_limits<Number>::min()} &&
                    value.get<int64_t>() <= int64_t{std::numeric_limits<Number>::max()};
  if (!fits) {
    throw UsageError(std::string(key) + ": " + ToText(value) + " is not a number that fits");
  }
  return static_cast<Number>(value.get<int64_t>());
}

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_JSON_TEXT_H
