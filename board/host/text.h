// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_TEXT_H
#define KESTREL_BOARD_HOST_TEXT_H

#include <string>

namespace kestrel::board {

/// Texts one behind the other, with ", " or `separator` between.
template <typename Texts>
std::string Join(const Texts& texts, const std::string& separator = ", ") {
  std::string joined;
  for (const auto& text : texts) {
    joined.append(joined.empty() ? "" : separator).append(text);
  }
  return joined;
}

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_TEXT_H
