// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_UTF8_H
#define KESTREL_TOOLS_KESTRELCTL_UTF8_H

#include <cstddef>
#include <optional>
#include <string_view>

namespace kestrelctl {

struct Character {
  char32_t code;
  size_t size;  ///< in bytes
};

/// The character that `bytes` begin with; nothing when they begin with none that UTF-8 allows.
std::optional<Character> FirstCharacter(std::string_view bytes);

bool IsUtf8(std::string_view bytes);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_UTF8_H
