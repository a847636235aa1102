// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_RUN_PROGRAM_H
#define KESTREL_TESTS_SUPPORT_RUN_PROGRAM_H

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/system_call_arguments.h"

namespace kestrel::test {

struct ProgramResult {
  int status;  ///< exit status, or 128 plus the signal that ended the program
  std::string standard_output;
  std::string standard_error;
};

/// Runs a program to its end, with nothing on its standard input. Words NAME=VALUE before the
/// program go to its environment. One that takes longer than a minute is killed.
ProgramResult RunProgram(const std::vector<std::string>& arguments,
                         const Environment& environment = {});

/// Whether a process that has nothing to do leaves the processor alone.
bool IsIdle(pid_t process);

/// A program that runs beside the test. It is killed at the end of its scope.
class BackgroundProgram {
 public:
  explicit BackgroundProgram(const std::vector<std::string>& arguments,
                             const Environment& environment = {});
  ~BackgroundProgram();
  BackgroundProgram(const BackgroundProgram&) = delete;
  BackgroundProgram& operator=(const BackgroundProgram&) = delete;

  pid_t pid() const { return pid_; }

  /// Reads standard output until it contains `text`; false when it ends or `limit` passes first.
  bool WaitForOutput(const std::string& text,
                     std::chrono::milliseconds limit = std::chrono::seconds(20));
  void Signal(int number) const;

  /// Waits for the end of the program.
  ProgramResult Wait(std::chrono::milliseconds limit = std::chrono::minutes(4));

 private:
  bool ReadSome(std::chrono::steady_clock::time_point deadline);
  void Collect(std::chrono::milliseconds limit);

  pid_t pid_ = -1;
  int output_ = -1;
  int error_ = -1;
  ProgramResult result_{};
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_RUN_PROGRAM_H
