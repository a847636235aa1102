// SPDX-License-Identifier: Apache-2.0
#include "host/program.h"

#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "host/error.h"
#include "protocol/wire.h"

namespace kestrel::board {
namespace {

namespace fs = std::filesystem;

std::string PreloadPath() {
  const fs::path own = fs::read_symlink("/proc/self/exe");
  const fs::path preload = (own.parent_path() / KESTREL_BOARD_PRELOAD).lexically_normal();
  if (!fs::exists(preload)) {
    throw BoardError(preload.string() + ": missing; install kestrel-board again");
  }
  if (preload.string().find_first_of(" :") != std::string::npos) {
    throw BoardError(preload.string() +
                     ": the loader takes no path with spaces or colons; install elsewhere");
  }
  return preload;
}

/// Puts `value` in front of a list in the environment, or behind it.
void Extend(const char* variable, const std::string& value, bool in_front) {
  const char* existing = getenv(variable);
  std::string list = value;
  if (existing != nullptr && *existing != '\0') {
    list = in_front ? value + ":" + existing : std::string(existing) + ":" + value;
  }
  setenv(variable, list.c_str(), 1);
}

std::vector<char*> Pointers(const std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

[[noreturn]] void ThrowNotStarted(const std::string& program, int error) {
  throw BoardError(program + ": " + strerror(error), error == ENOENT ? kNotFound : kCannotExecute);
}

}  // namespace

void EnterBoard(const std::string& socket_path, const std::vector<std::string>& paths) {
  std::string list;
  for (const std::string& path : paths) {
    list += (list.empty() ? "" : ":") + path;
  }
  setenv(wire::kSocketVariable, socket_path.c_str(), 1);
  setenv(wire::kPathsVariable, list.c_str(), 1);
  const std::string preload = PreloadPath();
  const char* existing = getenv("LD_PRELOAD");
  // A board inside a board: the object is there already and goes by the variables above.
  if (existing == nullptr || std::string(existing).find(preload) == std::string::npos) {
    Extend("LD_PRELOAD", preload, true);
  }
  // The address sanitizer wants to come first, but stands behind a preloaded object just as well.
  Extend("ASAN_OPTIONS", "verify_asan_link_order=0", false);
}

pid_t StartProgram(const std::vector<std::string>& arguments) {
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  pid_t pid = -1;
  const int error = posix_spawnp(&pid, arguments.front().c_str(), nullptr, &attributes,
                                 Pointers(arguments).data(), environ);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) {
    ThrowNotStarted(arguments.front(), error);
  }
  return pid;
}

void BecomeProgram(const std::vector<std::string>& arguments) {
  execvp(arguments.front().c_str(), Pointers(arguments).data());
  ThrowNotStarted(arguments.front(), errno);
}

}  // namespace kestrel::board
