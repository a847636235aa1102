// SPDX-License-Identifier: Apache-2.0
#include "preload/surroundings.h"

#include <stdlib.h>
#include <string.h>

#include "protocol/wire.h"

namespace kestrel::board::preload {
namespace {

void Copy(const char* variable, char* text, size_t size) {
  const char* value = getenv(variable);
  if (value != nullptr && strlen(value) < size) {
    strncpy(text, value, size - 1);
  }
}

__attribute__((constructor)) void LookAround() { OurSurroundings(); }

}  // namespace

/// Filled in before main runs, or by the first call of another object's constructor.
const Surroundings& OurSurroundings() {
  static Surroundings surroundings;
  static bool known = false;
  if (!known) {
    Copy(wire::kSocketVariable, surroundings.socket_path, sizeof surroundings.socket_path);
    Copy(wire::kPathsVariable, surroundings.paths, sizeof surroundings.paths);
    Copy(wire::kFilesVariable, surroundings.files, sizeof surroundings.files);
    known = true;
  }
  return surroundings;
}

}  // namespace kestrel::board::preload
