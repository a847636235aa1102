// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_PROGRAM_H
#define KESTREL_BOARD_HOST_PROGRAM_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace kestrel::board {

/// Exit statuses of a program that could not be started, as shells give them.
inline constexpr int kCannotExecute = 126;
inline constexpr int kNotFound = 127;

/// Sets the environment of this process so that programs started from it run on the board at
/// `socket_path`, whose devices stand in for `paths`. Throws BoardError when the object to be
/// preloaded is missing.
void EnterBoard(const std::string& socket_path, const std::vector<std::string>& paths);

/// Starts a program beside this process, with no signal blocked. Throws BoardError with status
/// kNotFound or kCannotExecute.
pid_t StartProgram(const std::vector<std::string>& arguments);

/// Becomes the program; throws as StartProgram does.
[[noreturn]] void BecomeProgram(const std::vector<std::string>& arguments);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_PROGRAM_H
