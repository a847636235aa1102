// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/wifi_text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <vector>

#include "host/hex_text.h"

namespace kestrel::board::wifi {
namespace {

constexpr char kLowerDigits[] = "0123456789abcdef";

struct NamedEscape {
  char byte;
  char letter;
};

constexpr NamedEscape kEscapes[] = {{'"', '"'},  {'\\', '\\'}, {'\x1b', 'e'},
                                    {'\n', 'n'}, {'\r', 'r'},  {'\t', 't'}};

bool IsPrintableByte(char c) { return c >= 0x20 && c < 0x7F; }

std::string LowerHex(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return {kLowerDigits[value / 16], kLowerDigits[value % 16]};
}

std::string EscapeByte(char byte) {
  for (const NamedEscape& escape : kEscapes) {
    if (byte == escape.byte) {
      return {'\\', escape.letter};
    }
  }
  return IsPrintableByte(byte) ? std::string(1, byte) : "\\x" + LowerHex(byte);
}

/// Takes a number of at most `longest` digits off the text at `position`; false when there is none.
bool TakeNumber(const std::string& text, size_t longest, int base, size_t* position,
                std::string* bytes) {
  const char* begin = text.data() + *position;
  const char* end = begin + std::min(longest, text.size() - *position);
  unsigned value = 0;
  const auto [stop, error] = std::from_chars(begin, end, value, base);
  if (error != std::errc()) {
    return false;
  }
  *position += static_cast<size_t>(stop - begin);
  bytes->push_back(static_cast<char>(value));
  return true;
}

/// Takes what follows a backslash off the text at `position`. What is no escape stands for nothing.
void TakeEscape(const std::string& text, size_t* position, std::string* bytes) {
  if (*position == text.size() || TakeNumber(text, 3, 8, position, bytes)) {
    return;
  }
  const char letter = text[(*position)++];
  if (letter == 'x') {
    TakeNumber(text, 2, 16, position, bytes);
    return;
  }
  for (const NamedEscape& escape : kEscapes) {
    if (letter == escape.letter) {
      bytes->push_back(escape.byte);
    }
  }
}

/// What stands between the quotes of a text that begins after the first and ends with the last.
std::optional<std::string> Unquote(const std::string& rest) {
  if (rest.empty() || rest.back() != '"') {
    return std::nullopt;
  }
  return rest.substr(0, rest.size() - 1);
}

}  // namespace

std::string Escape(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += EscapeByte(byte);
  }
  return text;
}

std::string Unescape(const std::string& text) {
  std::string bytes;
  for (size_t position = 0; position < text.size();) {
    const char c = text[position++];
    if (c == '\\') {
      TakeEscape(text, &position, &bytes);
    } else {
      bytes.push_back(c);
    }
  }
  return bytes;
}

std::optional<std::string> ParseBytes(const std::string& value) {
  if (value.rfind('"', 0) == 0) {
    return Unquote(value.substr(1));
  }
  if (value.rfind("P\"", 0) == 0) {
    const std::optional<std::string> text = Unquote(value.substr(2));
    return text.has_value() ? std::optional(Unescape(*text)) : std::nullopt;
  }
  const std::optional<std::vector<uint8_t>> bytes = FromHex(value);
  return bytes.has_value() ? std::optional(std::string(bytes->begin(), bytes->end()))
                           : std::nullopt;
}

std::string FormatBytes(const std::string& bytes) {
  if (IsPrintable(bytes)) {
    return '"' + bytes + '"';
  }
  std::string digits;
  for (const char byte : bytes) {
    digits += LowerHex(byte);
  }
  return digits;
}

bool IsPrintable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), IsPrintableByte);
}

}  // namespace kestrel::board::wifi
