// SPDX-License-Identifier: Apache-2.0
#include "command_filter.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace kestrel::relay {
namespace {

constexpr int32_t kMostNewId = 100;

/// What the library writes for a quote in a name or a passphrase.
constexpr std::string_view kEscapedQuote = "\\x22";

/// A number as "%i" prints it: no leading zeros, no plus sign, no blanks.
std::optional<int32_t> NumberOf(std::string_view text) {
  int32_t number = 0;
  const std::from_chars_result result =
      std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() && std::to_string(number) == text ? std::optional<int32_t>(number)
                                                                    : std::nullopt;
}

/// The library reads the ids of a listing with "%u" and prints them with "%i", so numbers beyond
/// INT32_MAX come out negative.
bool IsListedId(std::string_view text) { return NumberOf(text).has_value(); }

/// The library gives up an added network with a higher id.
bool IsNewId(std::string_view text) {
  const std::optional<int32_t> number = NumberOf(text);
  return number.has_value() && *number >= 0 && *number <= kMostNewId;
}

bool IsPrintable(char character) { return character >= 0x20 && character <= 0x7E; }

size_t CountEscapedQuotes(std::string_view text) {
  size_t count = 0;
  for (size_t at = text.find(kEscapedQuote); at != std::string_view::npos;
       at = text.find(kEscapedQuote, at + kEscapedQuote.size())) {
    ++count;
  }
  return count;
}

/// A text of so many printable bytes, quoted. Each of its quotes is escaped, which makes it longer;
/// whether an escape was a quote or stood there in the first place cannot be told.
bool IsQuoted(std::string_view value, size_t shortest, size_t longest) {
  if (value.size() < 2 || value.front() != '"' || value.back() != '"') {
    return false;
  }
  const std::string_view text = value.substr(1, value.size() - 2);
  const size_t saved = CountEscapedQuotes(text) * (kEscapedQuote.size() - 1);
  return std::all_of(text.begin(), text.end(), IsPrintable) &&
         text.find('"') == std::string_view::npos && text.size() >= shortest &&
         text.size() - saved <= longest;
}

bool IsName(std::string_view value) { return IsQuoted(value, 1, 32); }
bool IsPassphrase(std::string_view value) { return IsQuoted(value, 8, 63); }

using Check = bool (*)(std::string_view text);

/// A command word, and where it has one an id, a text, and a value.
struct Form {
  std::string_view word;
  Check id = nullptr;
  std::string_view text = {};
  Check value = nullptr;
};

constexpr Form kForms[] = {
    {"SCAN"},
    {"SCAN_RESULTS"},
    {"LIST_NETWORKS"},
    {"STATUS"},
    {"ADD_NETWORK"},
    {"SAVE_CONFIG"},
    {"GET_NETWORK", IsListedId, " ssid"},
    {"GET_NETWORK", IsListedId, " key_mgmt"},
    {"SET_NETWORK", IsNewId, " ssid ", IsName},
    {"SET_NETWORK", IsNewId, " psk ", IsPassphrase},
    {"SET_NETWORK", IsNewId, " key_mgmt NONE"},
    {"ENABLE_NETWORK", IsNewId},
    {"DISABLE_NETWORK", IsListedId},
    {"REMOVE_NETWORK", IsListedId},
};

/// Whether what follows the word has the form; it begins with the blank, or is empty.
bool HasForm(std::string_view rest, const Form& form) {
  if (form.id == nullptr) {
    return rest.empty();
  }
  if (rest.empty()) {
    return false;
  }
  const size_t end = std::min(rest.find(' ', 1), rest.size());
  const std::string_view tail = rest.substr(end);
  if (!form.id(rest.substr(1, end - 1)) || tail.substr(0, form.text.size()) != form.text) {
    return false;
  }
  const std::string_view value = tail.substr(form.text.size());
  return form.value == nullptr ? value.empty() : form.value(value);
}

}  // namespace

Verdict Judge(std::string_view command) {
  const std::string_view word = command.substr(0, command.find(' '));
  Verdict verdict = Verdict::kUnknownCommand;
  for (const Form& form : kForms) {
    if (form.word == word) {
      if (HasForm(command.substr(word.size()), form)) {
        return Verdict::kAllowed;
      }
      verdict = Verdict::kOtherForm;
    }
  }
  return verdict;
}

}  // namespace kestrel::relay
