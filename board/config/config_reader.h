// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_CONFIG_CONFIG_READER_H
#define KESTREL_BOARD_CONFIG_CONFIG_READER_H

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "config/config_node.h"

namespace kestrel::board {

/// A text in an array, and its line.
struct ConfigText {
  std::string text;
  int line;
};

/// A whole number in an array, and its line.
struct ConfigInteger {
  int64_t value;
  int line;
};

/// Takes known keys out of one table of a configuration. Whatever is not as expected throws
/// ConfigError with the line and what would have been right.
class ConfigReader {
 public:
  /// Reads `node`, which must be a table; `name` is what errors call it. The node must outlive the
  /// reader. A null node is an empty table.
  ConfigReader(const ConfigNode* node, std::string name);

  bool Boolean(const std::string& key, bool otherwise);
  int64_t Integer(const std::string& key, int64_t least, int64_t most, int64_t otherwise);
  int64_t RequiredInteger(const std::string& key, int64_t least, int64_t most);
  std::string Text(const std::string& key, const std::string& otherwise,
                   size_t longest = std::string::npos);
  std::string Choice(const std::string& key, const std::vector<std::string>& choices,
                     const std::string& otherwise);
  std::vector<ConfigText> Texts(const std::string& key);
  std::vector<ConfigInteger> Integers(const std::string& key, int64_t least, int64_t most);

  /// Whether there is a value under `key`.
  bool Has(const std::string& key) { return Find(key) != nullptr; }

  /// The table under `key`, empty when there is none.
  ConfigReader Table(const std::string& key);
  /// The tables of the array under `key`.
  std::vector<ConfigReader> Tables(const std::string& key);

  /// Refuses the value of a key for a reason of the caller's.
  [[noreturn]] void Refuse(const std::string& key, const std::string& reason) const;

  /// To be called when all known keys have been asked for.
  void RefuseUnknownKeys() const;

 private:
  /// The value of a key, or null; remembers that the key is known.
  const ConfigNode* Find(const std::string& key);
  template <typename Value>
  const Value* Get(const std::string& key, const char* expected);
  [[noreturn]] void Mismatch(const ConfigNode& node, const std::string& key,
                             const std::string& expected) const;
  std::string PathOf(const std::string& key) const;

  const ConfigNode* node_;
  std::string name_;
  std::set<std::string> known_;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_CONFIG_CONFIG_READER_H
