// SPDX-License-Identifier: Apache-2.0
#include "host/hex_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace kestrel::board {

std::optional<std::vector<uint8_t>> FromHex(const std::string& text) {
  const bool digits =
      std::all_of(text.begin(), text.end(), [](unsigned char c) { return isxdigit(c) != 0; });
  if (!digits || text.size() % 2 != 0) {
    return std::nullopt;
  }
  std::vector<uint8_t> bytes(text.size() / 2);
  const char* pair = text.data();
  for (uint8_t& byte : bytes) {
    std::from_chars(pair, pair + 2, byte, 16);
    pair += 2;
  }
  return bytes;
}

}  // namespace kestrel::board
