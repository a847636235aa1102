// SPDX-License-Identifier: Apache-2.0
#include "wifi/reply_text.h"

#include <algorithm>
#include <cstring>

#include "fuzz/support/promise.h"
#include "fuzz/wifi/text.h"

namespace kestrel::fuzz {
namespace {

void CheckLines(const eastl::string& reply) {
  std::string joined;
  for (const eastl::string& line : wifi::SplitLines(reply)) {
    Promise(!line.empty() && View(line).find('\n') == std::string_view::npos);
    joined += View(line);
  }
  std::string expected(View(reply));
  expected.erase(std::remove(expected.begin(), expected.end(), '\n'), expected.end());
  Promise(joined == expected);
}

void CheckFields(const eastl::string& line) {
  eastl::string field;
  size_t position = 0;
  while (position != eastl::string::npos) {
    const size_t next = wifi::NextField(position, wifi::kFieldDelimiters, line, field);
    Promise(next > position && (next < line.size() || next == eastl::string::npos));
    Promise(View(field).find_first_of(wifi::kFieldDelimiters) == std::string_view::npos);
    position = next;
  }
}

void CheckSearches(const eastl::string& text) {
  const size_t count = strlen(wifi::kFieldDelimiters);
  for (const size_t from : {size_t{0}, text.size() / 2, text.size(), text.size() + 1, SIZE_MAX}) {
    Promise(wifi::FindChar(text, '=', from) == View(text).find('=', from));
    Promise(wifi::FindFirstOf(text, wifi::kFieldDelimiters, from, count) ==
            View(text).find_first_of(wifi::kFieldDelimiters, from));
  }
  Promise(wifi::ContainsPsk(text) == (View(text).find("PSK") != std::string_view::npos));
}

}  // namespace
}  // namespace kestrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const eastl::string reply = kestrel::fuzz::Reply(data, size);
  kestrel::fuzz::CheckLines(reply);
  kestrel::fuzz::CheckFields(reply);
  kestrel::fuzz::CheckSearches(reply);
  return 0;
}
