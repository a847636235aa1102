// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_TERMINAL_PROGRAM_H
#define KESTREL_TESTS_SUPPORT_TERMINAL_PROGRAM_H

#include <sys/types.h>
#include <termios.h>

#include <chrono>
#include <string>
#include <vector>

namespace kestrel::test {

/// A program whose three standard streams are a terminal, and the person in front of it. Words
/// NAME=VALUE before the program go to its environment. It is killed at the end of its scope.
class TerminalProgram {
 public:
  explicit TerminalProgram(const std::vector<std::string>& arguments);
  ~TerminalProgram();
  TerminalProgram(const TerminalProgram&) = delete;
  TerminalProgram& operator=(const TerminalProgram&) = delete;

  void Type(const std::string& keys) const;
  void Signal(int number) const;
  /// Sends a signal to the foreground job of a shell.
  void SignalJob(int number) const;
  /// Takes the terminal away, as the end of a remote session does.
  void HangUp();

  /// Waits until the screen has shown `text`; false when 20 seconds pass first.
  bool WaitForScreen(const std::string& text);
  /// Likewise for something that a regular expression matches.
  bool WaitForMatch(const std::string& pattern);
  /// Waits until the terminal has these modes; false when 20 seconds pass first.
  bool WaitForModes(const termios& modes) const;
  /// Waits for the end of the program; its exit status, or 128 plus the signal that ended it.
  int Wait();
  /// All that has been shown so far.
  const std::string& screen() const { return screen_; }
  termios Settings() const;
  /// The terminal's settings before the program was started.
  const termios& InitialSettings() const { return initial_settings_; }

 private:
  /// Reads what there is; false when nothing came before the deadline.
  bool ReadSome(std::chrono::steady_clock::time_point deadline);

  int person_ = -1;
  int terminal_ = -1;  ///< held, so that the settings outlive the program
  termios initial_settings_{};
  pid_t pid_ = -1;
  std::string screen_;
};

/// A shell with job control that starts `job`. When that has stopped it prints whether the terminal
/// is "stopped as it was" or "stopped otherwise", resets the terminal as an interactive shell does,
/// prints the next line of input, such as "read 'ls'", and continues the job.
std::vector<std::string> ShellThatContinues(const std::vector<std::string>& job);

/// What tells whether a terminal is raw, for comparisons.
bool HaveSameModes(const termios& one, const termios& other);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_TERMINAL_PROGRAM_H
