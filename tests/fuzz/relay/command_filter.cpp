// SPDX-License-Identifier: Apache-2.0
// What the relay lets pass to the supplicant.
#include "command_filter.h"

#include <algorithm>
#include <cstdint>
#include <regex>
#include <string>

#include "fuzz/support/promise.h"

namespace kestrel::fuzz {
namespace {

using relay::Judge;
using relay::Verdict;

/// All that may pass, told in another way than the relay's own.
const std::regex& Shapes() {
  static const std::string id = "(0|-?[1-9][0-9]{0,9})";
  static const std::string new_id = "([0-9]|[1-9][0-9]|100)";
  static const std::regex shapes(
      "SCAN|SCAN_RESULTS|LIST_NETWORKS|STATUS|ADD_NETWORK|SAVE_CONFIG"
      "|GET_NETWORK " +
      id +
      " (ssid|key_mgmt)"
      "|SET_NETWORK " +
      new_id +
      " (ssid \"[ !#-~]{1,128}\"|psk \"[ !#-~]{8,252}\"|key_mgmt NONE)"
      "|ENABLE_NETWORK " +
      new_id + "|(DISABLE|REMOVE)_NETWORK " + id);
  return shapes;
}

void CheckAllowed(const std::string& command) {
  for (const char character : command) {
    Promise(character >= 0x20 && character <= 0x7E);
  }
  // None, or those around the text.
  const auto quotes = std::count(command.begin(), command.end(), '"');
  Promise(quotes == 0 || (quotes == 2 && command.back() == '"'));
  Promise(std::regex_match(command, Shapes()));
  // The supplicant reads lines of its own file.
  Promise(Judge(command + "\n") != Verdict::kAllowed && Judge(command + " ") != Verdict::kAllowed &&
          Judge(" " + command) != Verdict::kAllowed);
}

/// As the library writes a text.
std::string Quoted(const std::string& text) {
  return '"' + std::regex_replace(text, std::regex("\""), "\\x22") + '"';
}

/// The input as the text of a network, which passes if and only if the library would take it.
void CheckText(const std::string& text) {
  const bool is_printable =
      std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c <= 0x7E; });
  const std::string quoted = Quoted(text);
  if (is_printable && !text.empty() && text.size() <= 32) {
    Promise(Judge("SET_NETWORK 7 ssid " + quoted) == Verdict::kAllowed);
  }
  if (is_printable && text.size() >= 8 && text.size() <= 63) {
    Promise(Judge("SET_NETWORK 7 psk " + quoted) == Verdict::kAllowed);
  }
  if (!is_printable || text.empty()) {
    Promise(Judge("SET_NETWORK 7 ssid " + quoted) == Verdict::kOtherForm);
    Promise(Judge("SET_NETWORK 7 psk " + quoted) == Verdict::kOtherForm);
  }
}

}  // namespace
}  // namespace kestrel::fuzz

/// The input is a command, and the text of one.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  if (kestrel::relay::Judge(input) == kestrel::relay::Verdict::kAllowed) {
    kestrel::fuzz::CheckAllowed(input);
  }
  if (size <= 300) {
    kestrel::fuzz::CheckText(input);
  }
  return 0;
}
