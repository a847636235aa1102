// SPDX-License-Identifier: Apache-2.0
#include <toml++/toml.h>

#include "config/config_file.h"

namespace kestrel::board {
namespace {

ConfigNode Convert(const toml::node& node);

ConfigNode::Table ConvertTable(const toml::table& table) {
  ConfigNode::Table converted;
  for (const auto& [key, value] : table) {
    converted.emplace_back(std::string(key.str()), Convert(value));
  }
  return converted;
}

ConfigNode::Array ConvertArray(const toml::array& array) {
  ConfigNode::Array converted;
  for (const toml::node& element : array) {
    converted.push_back(Convert(element));
  }
  return converted;
}

ConfigNode Convert(const toml::node& node) {
  ConfigNode converted;
  converted.line = static_cast<int>(node.source().begin.line);
  if (const toml::table* table = node.as_table()) {
    converted.value = ConvertTable(*table);
  } else if (const toml::array* array = node.as_array()) {
    converted.value = ConvertArray(*array);
  } else if (const auto* text = node.as_string()) {
    converted.value = text->get();
  } else if (const auto* number = node.as_integer()) {
    converted.value = number->get();
  } else if (const auto* boolean = node.as_boolean()) {
    converted.value = boolean->get();
  }
  return converted;
}

}  // namespace

ConfigNode ParseToml(const std::string& text) {
  try {
    return Convert(toml::parse(text));
  } catch (const toml::parse_error& error) {
    throw ConfigError(static_cast<int>(error.source().begin.line),
                      std::string(error.description()));
  }
}

}  // namespace kestrel::board
