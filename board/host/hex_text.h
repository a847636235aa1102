// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_HEX_TEXT_H
#define KESTREL_BOARD_HOST_HEX_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrel::board {

/// Bytes as pairs of upper-case hexadecimal digits, with `separator` between the pairs.
template <typename Bytes>
std::string ToHex(const Bytes& bytes, const std::string& separator = "") {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const auto element : bytes) {
    const auto byte = static_cast<uint8_t>(element);
    text += text.empty() ? "" : separator;
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
  }
  return text;
}

/// The bytes of pairs of hexadecimal digits of either case; nothing when `text` is anything else.
std::optional<std::vector<uint8_t>> FromHex(const std::string& text);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_HEX_TEXT_H
