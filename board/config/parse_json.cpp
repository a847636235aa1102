// SPDX-License-Identifier: Apache-2.0
#include <nlohmann/json.hpp>

#include "config/config_file.h"

namespace kestrel::board {
namespace {

using nlohmann::json;

/// Far deeper than any configuration; it keeps hostile files from the end of the stack.
constexpr size_t kDeepest = 64;

/// Walks through a text and counts the lines that have been read.
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(const char* position, int* line) : position_(position), line_(line) {}
  reference operator*() const { return *position_; }
  CountingIterator& operator++() {
    *line_ += *position_ == '\n' ? 1 : 0;
    ++position_;
    return *this;
  }
  bool operator==(const CountingIterator& other) const { return position_ == other.position_; }
  bool operator!=(const CountingIterator& other) const { return !(*this == other); }

 private:
  const char* position_;
  int* line_;
};

/// Builds configuration nodes from the parser's events. A value in a table is given the line of its
/// key: the parser reads one character past a number before it reports it.
class NodeBuilder : public nlohmann::json_sax<json> {
 public:
  explicit NodeBuilder(const int* line) : line_(line) {}

  ConfigNode Take() { return std::move(root_); }

  bool null() override { return Add(ConfigNode::Unusable()); }
  bool boolean(bool value) override { return Add(value); }
  bool number_integer(number_integer_t value) override { return Add(value); }
  bool number_unsigned(number_unsigned_t value) override {
    return value > INT64_MAX ? Add(ConfigNode::Unusable()) : Add(static_cast<int64_t>(value));
  }
  bool number_float(number_float_t, const string_t&) override {
    return Add(ConfigNode::Unusable());
  }
  bool string(string_t& value) override { return Add(std::move(value)); }
  bool binary(binary_t&) override { return Add(ConfigNode::Unusable()); }
  bool start_object(std::size_t) override { return Open(ConfigNode::Table()); }
  bool start_array(std::size_t) override { return Open(ConfigNode::Array()); }
  bool end_object() override { return Close(); }
  bool end_array() override { return Close(); }

  bool key(string_t& name) override {
    for (const auto& [existing, value] : std::get<ConfigNode::Table>(open_.back()->value)) {
      if (existing == name) {
        throw ConfigError(*line_, "the key '" + name + "' stands here twice");
      }
    }
    key_ = std::move(name);
    key_line_ = *line_;
    return true;
  }

  bool parse_error(std::size_t, const std::string&, const json::exception& error) override {
    throw ConfigError(*line_, Reason(error.what()));
  }

 private:
  /// What the parser says without its own name and position, which it puts in front.
  static std::string Reason(const std::string& message) {
    const size_t position = message.find(": ");
    return position == std::string::npos ? message : message.substr(position + 2);
  }

  template <typename Value>
  ConfigNode& Append(Value&& value) {
    ConfigNode node;
    node.value = std::forward<Value>(value);
    node.line = *line_;
    if (open_.empty()) {
      root_ = std::move(node);
      return root_;
    }
    if (auto* array = std::get_if<ConfigNode::Array>(&open_.back()->value)) {
      return array->emplace_back(std::move(node));
    }
    node.line = key_line_;
    auto& table = std::get<ConfigNode::Table>(open_.back()->value);
    return table.emplace_back(std::move(key_), std::move(node)).second;
  }

  template <typename Value>
  bool Add(Value&& value) {
    Append(std::forward<Value>(value));
    return true;
  }

  template <typename Value>
  bool Open(Value&& value) {
    if (open_.size() == kDeepest) {
      throw ConfigError(*line_, "nested deeper than " + std::to_string(kDeepest) + " levels");
    }
    open_.push_back(&Append(std::forward<Value>(value)));
    return true;
  }

  bool Close() {
    open_.pop_back();
    return true;
  }

  const int* line_;
  ConfigNode root_;
  // Addresses stay good: nothing is added to a table or array while one inside it is open.
  std::vector<ConfigNode*> open_;
  std::string key_;
  int key_line_ = 1;
};

}  // namespace

ConfigNode ParseJson(const std::string& text) {
  int line = 1;
  NodeBuilder builder(&line);
  const char* begin = text.data();
  json::sax_parse(CountingIterator(begin, &line), CountingIterator(begin + text.size(), &line),
                  &builder);
  return builder.Take();
}

}  // namespace kestrel::board
