// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_ERROR_H
#define KESTREL_BOARD_HOST_ERROR_H

#include <stdexcept>
#include <string>

namespace kestrel::board {

/// A failure to be told to the user in one line; `status` is the exit status that goes with it.
class BoardError : public std::runtime_error {
 public:
  explicit BoardError(const std::string& reason, int status = 1)
      : std::runtime_error(reason), status_(status) {}
  int status() const { return status_; }

 private:
  int status_;
};

/// An argument that was given wrongly.
class UsageError : public BoardError {
 public:
  explicit UsageError(const std::string& reason) : BoardError(reason, 2) {}
};

/// Prints "kestrel-board: " and `text` as one line on standard error, in one call: the lines of
/// commands that run at a time do not mix.
void PrintDiagnostic(std::string text);

/// The failure of a system call: `what` with errno's text.
[[noreturn]] void ThrowErrno(const std::string& what);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_ERROR_H
