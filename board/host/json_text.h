// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_JSON_TEXT_H
#define KESTREL_BOARD_HOST_JSON_TEXT_H

#include <nlohmann/json.hpp>
#include <string>

namespace kestrel::board {

/// JSON as text. Names come from programs and from the command line, so they need not be UTF-8;
/// what is not is replaced.
inline std::string ToText(const nlohmann::json& value, int indent = -1) {
  return value.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_JSON_TEXT_H
