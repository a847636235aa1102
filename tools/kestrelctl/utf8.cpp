// SPDX-License-Identifier: Apache-2.0
#include "utf8.h"

#include <cstdint>

namespace kestrelctl {
namespace {

/// Characters of one length in bytes: the least that needs so many, and what a first byte looks
/// like.
struct Form {
  size_t size;
  char32_t least;
  uint8_t mask;
  uint8_t lead;
};

constexpr Form kForms[] = {
    {1, 0, 0x80, 0x00},
    {2, 0x80, 0xE0, 0xC0},
    {3, 0x800, 0xF0, 0xE0},
    {4, 0x10000, 0xF8, 0xF0},
};

constexpr uint8_t kFollowingMask = 0xC0;
constexpr uint8_t kFollowingLead = 0x80;
constexpr char32_t kFirstSurrogate = 0xD800;
constexpr char32_t kLastSurrogate = 0xDFFF;
constexpr char32_t kLast = 0x10FFFF;

std::optional<Character> Decode(std::string_view bytes, const Form& form) {
  if (bytes.size() < form.size) {
    return std::nullopt;
  }
  char32_t code = static_cast<uint8_t>(bytes[0]) & static_cast<uint8_t>(~form.mask);
  for (size_t i = 1; i < form.size; ++i) {
    const auto byte = static_cast<uint8_t>(bytes[i]);
    if ((byte & kFollowingMask) != kFollowingLead) {
      return std::nullopt;
    }
    code = code << 6U | (byte & static_cast<uint8_t>(~kFollowingMask));
  }
  const bool is_surrogate = code >= kFirstSurrogate && code <= kLastSurrogate;
  if (code < form.least || code > kLast || is_surrogate) {
    return std::nullopt;
  }
  return Character{code, form.size};
}

}  // namespace

std::optional<Character> FirstCharacter(std::string_view bytes) {
  for (const Form& form : kForms) {
    if (!bytes.empty() && (static_cast<uint8_t>(bytes[0]) & form.mask) == form.lead) {
      return Decode(bytes, form);
    }
  }
  return std::nullopt;
}

bool IsUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::optional<Character> character = FirstCharacter(bytes);
    if (!character) {
      return false;
    }
    bytes.remove_prefix(character->size);
  }
  return true;
}

}  // namespace kestrelctl
