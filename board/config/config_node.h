// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_CONFIG_CONFIG_NODE_H
#define KESTREL_BOARD_CONFIG_CONFIG_NODE_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kestrel::board {

/// A configuration that cannot be used, and the line that is at fault.
class ConfigError : public std::runtime_error {
 public:
  ConfigError(int line, const std::string& reason) : std::runtime_error(reason), line_(line) {}
  int line() const { return line_; }

 private:
  int line_;
};

/// A value of a configuration file, whatever its format, with the line on which it stands.
struct ConfigNode {
  using Table = std::vector<std::pair<std::string, ConfigNode>>;
  using Array = std::vector<ConfigNode>;
  /// A value of a kind that no configuration uses (null, a fraction, a date).
  struct Unusable {};

  std::variant<Unusable, bool, int64_t, std::string, Array, Table> value;
  int line = 1;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_CONFIG_CONFIG_NODE_H
