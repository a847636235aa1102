// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_FUZZ_SUPPORT_INPUT_H
#define KESTREL_TESTS_FUZZ_SUPPORT_INPUT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel::fuzz {

/// One input, cut into sections. A byte that no reply needs separates them, so that seeds can be
/// written and read by people.
class Input {
 public:
  static constexpr char kSeparator = '\x1e';

  Input(const uint8_t* data, size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool AtEnd() const { return rest_.empty(); }

  /// The next section, or an empty text at the end.
  std::string TakeSection();

  /// Takes the next section if it begins with `prefix`, and gives what follows that.
  std::optional<std::string> TakeBehind(std::string_view prefix);

 private:
  std::string_view NextSection() const { return rest_.substr(0, rest_.find(kSeparator)); }

  std::string_view rest_;
};

}  // namespace kestrel::fuzz

#endif  // KESTREL_TESTS_FUZZ_SUPPORT_INPUT_H
