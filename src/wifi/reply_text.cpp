// SPDX-License-Identifier: Apache-2.0
#include "wifi/reply_text.h"

#include <string.h>

namespace wifi {

eastl::vector<eastl::string> SplitLines(const eastl::string& reply) {
  eastl::vector<eastl::string> lines;
  size_t start = 0;
  for (size_t end = FindChar(reply, '\n', 0); end != eastl::string::npos;
       end = FindChar(reply, '\n', start)) {
    if (end != start) {
      lines.push_back(reply.substr(start, end - start));
    }
    start = end + 1;
  }
  if (start < reply.size()) {
    lines.push_back(reply.substr(start));
  }
  return lines;
}

size_t FindChar(const eastl::string& text, char c, size_t from) {
  return from < text.size() ? text.find(c, from) : eastl::string::npos;
}

size_t FindFirstOf(const eastl::string& text, const char* set, size_t from, size_t setLength) {
  return from < text.size() ? text.find_first_of(set, from, setLength) : eastl::string::npos;
}

size_t NextField(size_t from, const char* delimiters, const eastl::string& line,
                 eastl::string& field) {
  const size_t count = strlen(delimiters);
  size_t position = FindFirstOf(line, delimiters, from, count);
  if (position == eastl::string::npos) {
    return eastl::string::npos;
  }
  field = line.substr(from, position - from);
  while (FindFirstOf(line, delimiters, position, count) == position) {
    ++position;
  }
  return position < line.size() ? position : eastl::string::npos;
}

bool ContainsPsk(const eastl::string& flags) { return flags.find("PSK") != eastl::string::npos; }

}  // namespace wifi
