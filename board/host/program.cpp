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
#include "host/text.h"
#include "protocol/wire.h"

namespace kestrel::board {
namespace {

namespace fs = std::filesystem;

/// The path of the object to be preloaded. The loader takes none with spaces or colons; for such a
/// one there is a link in the folder of the board, which has neither.
std::string PreloadPath(const fs::path& board_folder) {
  const fs::path own = fs::read_symlink("/proc/self/exe");
  const fs::path preload = (own.parent_path() / KESTREL_BOARD_PRELOAD).lexically_normal();
  if (!fs::exists(preload)) {
    throw BoardError(preload.string() + ": missing; install kestrel-board again");
  }
  if (preload.string().find_first_of(" :") == std::string::npos) {
    return preload;
  }
  const fs::path link = board_folder / "preload.so";
  std::error_code error;
  fs::create_symlink(preload, link, error);
  if (error && error != std::errc::file_exists) {
    // The loader only warns of an object that is missing, and the program would see this machine.
    throw BoardError(link.string() + ": " + error.message());
  }
  return link;
}

std::vector<char*> Pointers(const std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

[[noreturn]] void ThrowNotStarted(const std::string& program, int error) {
  throw BoardError(program + ": " + strerror(error), error == ENOENT ? kNotFound : kCannotExecute);
}

/// A list with one more entry; none when it was empty.
std::string Joined(const std::string& first, const std::string& second) {
  return first.empty() || second.empty() ? first + second : first + ":" + second;
}

std::map<std::string, std::string> OwnVariables() {
  std::map<std::string, std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    const size_t equals = text.find('=');
    if (equals != std::string::npos) {
      variables[text.substr(0, equals)] = text.substr(equals + 1);
    }
  }
  return variables;
}

}  // namespace

BoardEnvironment::BoardEnvironment(const std::string& socket_path,
                                   const std::vector<std::string>& paths,
                                   const std::vector<std::string>& files)
    : variables_(OwnVariables()) {
  variables_[wire::kSocketVariable] = socket_path;
  variables_[wire::kPathsVariable] = Join(paths, ":");
  variables_[wire::kFilesVariable] = Join(files, ":");
  const std::string preload = PreloadPath(fs::path(socket_path).parent_path());
  std::string& preloaded = variables_["LD_PRELOAD"];
  // On a board inside a board the object is there already; it goes by the variables above.
  if (preloaded.find(preload) == std::string::npos) {
    preloaded = Joined(preload, preloaded);
  }
  // The address sanitizer wants to come first, but stands behind a preloaded object just as well.
  std::string& sanitizer = variables_["ASAN_OPTIONS"];
  sanitizer = Joined(sanitizer, "verify_asan_link_order=0");
}

std::vector<std::string> BoardEnvironment::Entries() const {
  std::vector<std::string> entries;
  entries.reserve(variables_.size());
  for (const auto& [name, value] : variables_) {
    entries.push_back(name);
    entries.back().append("=").append(value);
  }
  return entries;
}

pid_t BoardEnvironment::StartProgram(const std::vector<std::string>& arguments) const {
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  const std::vector<std::string> entries = Entries();
  pid_t pid = -1;
  const int error = posix_spawnp(&pid, arguments.front().c_str(), nullptr, &attributes,
                                 Pointers(arguments).data(), Pointers(entries).data());
  posix_spawnattr_destroy(&attributes);
  if (error != 0) {
    ThrowNotStarted(arguments.front(), error);
  }
  return pid;
}

void BoardEnvironment::BecomeProgram(const std::vector<std::string>& arguments) const {
  const std::vector<std::string> entries = Entries();
  execvpe(arguments.front().c_str(), Pointers(arguments).data(), Pointers(entries).data());
  ThrowNotStarted(arguments.front(), errno);
}

}  // namespace kestrel::board
