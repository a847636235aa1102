// SPDX-License-Identifier: Apache-2.0
#include "eager_binding.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace kestrel::relay {
namespace {

constexpr char kVariable[] = "LD_BIND_NOW";

/// Where the program lies that was called by a name.
std::string PathOf(const std::string& name) {
  std::error_code unreadable;
  return name.find('/') != std::string::npos
             ? name
             : std::filesystem::read_symlink("/proc/self/exe", unreadable).string();
}

}  // namespace

void BindAllCalls(char** arguments) {
  const char* const value = getenv(kVariable);
  if (value != nullptr && *value != '\0') {
    return;
  }
  setenv(kVariable, "1", 1);
  // execvp() would hand a program that only an emulator can start to a shell.
  execv(PathOf(arguments[0]).c_str(), arguments);
}

}  // namespace kestrel::relay
