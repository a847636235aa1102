// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_CONFIG_CONFIG_FILE_H
#define KESTREL_BOARD_CONFIG_CONFIG_FILE_H

#include <string>

#include "config/config_node.h"

namespace kestrel::board {

/// Parse the text of a configuration file; throw ConfigError.
ConfigNode ParseToml(const std::string& text);
ConfigNode ParseJson(const std::string& text);

/// Reads a file in the format that its name ends in (.toml or .json). Throws BoardError when it
/// cannot be read and ConfigError when it cannot be parsed.
ConfigNode LoadConfigFile(const std::string& path);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_CONFIG_CONFIG_FILE_H
