// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_PROGRAM_H
#define KESTREL_BOARD_HOST_PROGRAM_H

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace kestrel::board {

/// Exit statuses of a program that could not be started, as shells give them.
inline constexpr int kCannotExecute = 126;
inline constexpr int kNotFound = 127;

/// The environment in which programs run on the board at `socket_path`, whose devices stand in for
/// `paths` and redirect to `files`: this process's own with what they need added. Throws BoardError
/// when the object to be preloaded is missing.
///
/// It is not this process's environment, because this process may itself run on a board.
class BoardEnvironment {
 public:
  BoardEnvironment(const std::string& socket_path, const std::vector<std::string>& paths,
                   const std::vector<std::string>& files);

  /// Starts a program beside this process, with no signal blocked. Throws BoardError with status
  /// kNotFound or kCannotExecute.
  pid_t StartProgram(const std::vector<std::string>& arguments) const;

  /// Becomes the program; throws as StartProgram does.
  [[noreturn]] void BecomeProgram(const std::vector<std::string>& arguments) const;

 private:
  std::vector<std::string> Entries() const;

  std::map<std::string, std::string> variables_;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_PROGRAM_H
