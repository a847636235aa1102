// SPDX-License-Identifier: Apache-2.0
#include "terminal_text.h"

#include <langinfo.h>

#include <algorithm>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <optional>

#include "utf8.h"

namespace kestrelctl {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

struct Range {
  char32_t first;
  char32_t last;
};

/// Characters that are invisible or change how others are shown.
constexpr Range kUnseen[] = {
    {0x00AD, 0x00AD},   {0x034F, 0x034F},   {0x0600, 0x0605},   {0x061C, 0x061C},
    {0x06DD, 0x06DD},   {0x070F, 0x070F},   {0x08E2, 0x08E2},   {0x115F, 0x1160},
    {0x17B4, 0x17B5},   {0x180B, 0x180F},   {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x206F},   {0x3164, 0x3164},   {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},
    {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},   {0x110BD, 0x110BD}, {0x110CD, 0x110CD},
    {0x13430, 0x1345F}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF},
};

bool IsUnseen(char32_t code) {
  return std::any_of(std::begin(kUnseen), std::end(kUnseen), [code](const Range& range) {
    return range.first <= code && code <= range.last;
  });
}

bool ShowsUtf8() {
  static const bool shows =
      setlocale(LC_CTYPE, "") != nullptr && strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
  return shows;
}

bool CanBeShown(char32_t code) {
  if (code < 0x80) {
    return code >= 0x20 && code < 0x7F;
  }
  // Controls have no width, not even none.
  return ShowsUtf8() && wcwidth(static_cast<wchar_t>(code)) >= 0 && !IsUnseen(code);
}

std::string HexByte(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return {kDigits[value >> 4U], kDigits[value & 0xFU]};
}

std::string Escaped(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += "\\x" + HexByte(byte);
  }
  return text;
}

}  // namespace

std::string Quoted(std::string_view bytes) {
  std::string text = "\"";
  while (!bytes.empty()) {
    const std::optional<Character> character = FirstCharacter(bytes);
    const std::string_view piece = bytes.substr(0, character ? character->size : 1);
    if (piece == "\"" || piece == "\\") {
      text += "\\" + std::string(piece);
    } else if (character && CanBeShown(character->code)) {
      text += piece;
    } else {
      text += Escaped(piece);
    }
    bytes.remove_prefix(piece.size());
  }
  return text + "\"";
}

std::string Hex(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += HexByte(byte);
  }
  return text;
}

}  // namespace kestrelctl
