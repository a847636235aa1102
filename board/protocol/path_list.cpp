// SPDX-License-Identifier: Apache-2.0
#include "protocol/path_list.h"

#include <string.h>

namespace kestrel::board::wire {
namespace {

bool IsNumber(const char* text) {
  const size_t digits = strspn(text, "0123456789");
  return digits > 0 && text[digits] == '\0';
}

}  // namespace

bool Matches(const char* entry, size_t length, const char* path) {
  if (length > 0 && entry[length - 1] == '#') {
    return strncmp(entry, path, length - 1) == 0 && IsNumber(path + length - 1);
  }
  return strlen(path) == length && memcmp(entry, path, length) == 0;
}

bool IsListed(const char* list, const char* path) {
  for (const char* entry = list; *entry != '\0';) {
    const size_t length = strcspn(entry, ":");
    if (Matches(entry, length, path)) {
      return true;
    }
    entry += length;
    entry += *entry == ':' ? 1 : 0;
  }
  return false;
}

}  // namespace kestrel::board::wire
