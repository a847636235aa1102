// SPDX-License-Identifier: Apache-2.0
#include "fuzz/support/input.h"

#include <algorithm>

namespace kestrel::fuzz {

std::string Input::TakeSection() {
  std::string section(NextSection());
  rest_.remove_prefix(std::min(section.size() + 1, rest_.size()));
  return section;
}

std::optional<std::string> Input::TakeBehind(std::string_view prefix) {
  if (NextSection().substr(0, prefix.size()) != prefix) {
    return std::nullopt;
  }
  return TakeSection().substr(prefix.size());
}

}  // namespace kestrel::fuzz
