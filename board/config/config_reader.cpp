// SPDX-License-Identifier: Apache-2.0
#include "config/config_reader.h"

#include <algorithm>

#include "host/text.h"

namespace kestrel::board {
namespace {

const ConfigNode::Table kEmptyTable;

const ConfigNode::Table& Members(const ConfigNode* node) {
  return node == nullptr ? kEmptyTable : std::get<ConfigNode::Table>(node->value);
}

}  // namespace

ConfigReader::ConfigReader(const ConfigNode* node, std::string name)
    : node_(node), name_(std::move(name)) {
  if (node != nullptr && !std::holds_alternative<ConfigNode::Table>(node->value)) {
    throw ConfigError(node->line, (name_.empty() ? "the file" : "'" + name_ + "'") +
                                      std::string(" must be a table"));
  }
}

std::string ConfigReader::PathOf(const std::string& key) const {
  return name_.empty() ? key : name_ + "." + key;
}

const ConfigNode* ConfigReader::Find(const std::string& key) {
  known_.insert(key);
  for (const auto& [name, value] : Members(node_)) {
    if (name == key) {
      return &value;
    }
  }
  return nullptr;
}

void ConfigReader::Mismatch(const ConfigNode& node, const std::string& key,
                            const std::string& expected) const {
  throw ConfigError(node.line, "'" + PathOf(key) + "' must be " + expected);
}

template <typename Value>
const Value* ConfigReader::Get(const std::string& key, const char* expected) {
  const ConfigNode* node = Find(key);
  if (node == nullptr) {
    return nullptr;
  }
  const Value* value = std::get_if<Value>(&node->value);
  if (value == nullptr) {
    Mismatch(*node, key, expected);
  }
  return value;
}

bool ConfigReader::Boolean(const std::string& key, bool otherwise) {
  const bool* value = Get<bool>(key, "true or false");
  return value == nullptr ? otherwise : *value;
}

int64_t ConfigReader::Integer(const std::string& key, int64_t least, int64_t most,
                              int64_t otherwise) {
  const std::string expected =
      "a whole number from " + std::to_string(least) + " to " + std::to_string(most);
  const int64_t* value = Get<int64_t>(key, expected.c_str());
  if (value == nullptr) {
    return otherwise;
  }
  if (*value < least || *value > most) {
    Mismatch(*Find(key), key, expected);
  }
  return *value;
}

int64_t ConfigReader::RequiredInteger(const std::string& key, int64_t least, int64_t most) {
  if (Find(key) == nullptr) {
    throw ConfigError(node_->line, "'" + PathOf(key) + "' is missing");
  }
  return Integer(key, least, most, least);
}

std::string ConfigReader::Text(const std::string& key, const std::string& otherwise,
                               size_t longest) {
  const std::string* value = Get<std::string>(key, "a text");
  if (value == nullptr) {
    return otherwise;
  }
  if (value->size() > longest) {
    Mismatch(*Find(key), key, "a text of at most " + std::to_string(longest) + " bytes");
  }
  return *value;
}

std::string ConfigReader::Choice(const std::string& key, const std::vector<std::string>& choices,
                                 const std::string& otherwise) {
  const std::string expected = "one of: " + Join(choices);
  const std::string* value = Get<std::string>(key, expected.c_str());
  if (value == nullptr) {
    return otherwise;
  }
  if (std::find(choices.begin(), choices.end(), *value) == choices.end()) {
    Mismatch(*Find(key), key, expected);
  }
  return *value;
}

std::vector<ConfigText> ConfigReader::Texts(const std::string& key) {
  const auto* array = Get<ConfigNode::Array>(key, "an array of texts");
  std::vector<ConfigText> texts;
  for (const ConfigNode& element : array == nullptr ? ConfigNode::Array() : *array) {
    const auto* text = std::get_if<std::string>(&element.value);
    if (text == nullptr) {
      Mismatch(element, key, "an array of texts");
    }
    texts.push_back({*text, element.line});
  }
  return texts;
}

std::vector<ConfigInteger> ConfigReader::Integers(const std::string& key, int64_t least,
                                                  int64_t most) {
  const std::string expected =
      "an array of whole numbers from " + std::to_string(least) + " to " + std::to_string(most);
  const auto* array = Get<ConfigNode::Array>(key, expected.c_str());
  std::vector<ConfigInteger> integers;
  for (const ConfigNode& element : array == nullptr ? ConfigNode::Array() : *array) {
    const auto* integer = std::get_if<int64_t>(&element.value);
    if (integer == nullptr || *integer < least || *integer > most) {
      Mismatch(element, key, expected);
    }
    integers.push_back({*integer, element.line});
  }
  return integers;
}

ConfigReader ConfigReader::Table(const std::string& key) {
  return ConfigReader(Find(key), PathOf(key));
}

std::vector<ConfigReader> ConfigReader::Tables(const std::string& key) {
  const auto* array = Get<ConfigNode::Array>(key, "an array of tables");
  std::vector<ConfigReader> readers;
  if (array != nullptr) {
    for (const ConfigNode& element : *array) {
      readers.emplace_back(&element, PathOf(key));
    }
  }
  return readers;
}

void ConfigReader::Refuse(const std::string& key, const std::string& reason) const {
  for (const auto& [name, value] : Members(node_)) {
    if (name == key) {
      throw ConfigError(value.line, "'" + PathOf(key) + "': " + reason);
    }
  }
  throw ConfigError(node_ == nullptr ? 1 : node_->line, "'" + PathOf(key) + "': " + reason);
}

void ConfigReader::RefuseUnknownKeys() const {
  for (const auto& [name, value] : Members(node_)) {
    if (known_.count(name) == 0) {
      throw ConfigError(value.line,
                        "unknown key '" + PathOf(name) + "' (known: " + Join(known_) + ")");
    }
  }
}

}  // namespace kestrel::board
