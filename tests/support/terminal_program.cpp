// SPDX-License-Identifier: Apache-2.0
#include "support/terminal_program.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <regex>
#include <stdexcept>

#include "support/system_call_arguments.h"

namespace kestrel::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLimit(20);

/// Starts a program in a session of its own. The terminal that it opens first becomes that of the
/// session.
pid_t StartOn(const std::string& terminal, std::vector<std::string> arguments) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, terminal.c_str(), O_RDWR, 0);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  std::vector<std::string> environment = Merged(TakeAssignments(arguments));
  pid_t pid = -1;
  const int failure = posix_spawnp(&pid, arguments.at(0).c_str(), &actions, &attributes,
                                   Pointers(arguments).data(), Pointers(environment).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) {
    throw std::runtime_error(arguments.at(0) + " does not start");
  }
  return pid;
}

}  // namespace

TerminalProgram::TerminalProgram(const std::vector<std::string>& arguments) {
  std::array<char, 64> name{};
  if (openpty(&person_, &terminal_, nullptr, nullptr, nullptr) != 0 ||
      ttyname_r(terminal_, name.data(), name.size()) != 0) {
    throw std::runtime_error("there is no pseudo-terminal");
  }
  fcntl(person_, F_SETFD, FD_CLOEXEC);
  fcntl(terminal_, F_SETFD, FD_CLOEXEC);
  initial_settings_ = Settings();
  pid_ = StartOn(name.data(), arguments);
}

TerminalProgram::~TerminalProgram() {
  if (pid_ > 0) {
    Signal(SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  HangUp();
}

void TerminalProgram::Type(const std::string& keys) const {
  if (write(person_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal takes no more keys");
  }
}

void TerminalProgram::Signal(int number) const { kill(pid_, number); }

void TerminalProgram::SignalJob(int number) const { kill(-tcgetpgrp(person_), number); }

void TerminalProgram::HangUp() {
  close(terminal_);
  close(person_);
  terminal_ = person_ = -1;
}

bool TerminalProgram::ReadSome(Clock::time_point deadline) {
  pollfd readable{person_, POLLIN, 0};
  std::array<char, 4096> buffer;
  if (poll(&readable, 1, MillisecondsUntil(deadline)) <= 0) {
    return false;
  }
  const ssize_t count = read(person_, buffer.data(), buffer.size());
  screen_.append(buffer.data(), static_cast<size_t>(std::max<ssize_t>(0, count)));
  return count > 0;
}

bool TerminalProgram::WaitForScreen(const std::string& text) {
  const Clock::time_point deadline = Clock::now() + kLimit;
  while (screen_.find(text) == std::string::npos) {
    if (!ReadSome(deadline)) {
      return false;
    }
  }
  return true;
}

bool TerminalProgram::WaitForMatch(const std::string& pattern) {
  const Clock::time_point deadline = Clock::now() + kLimit;
  const std::regex expression(pattern);
  while (!std::regex_search(screen_, expression)) {
    if (!ReadSome(deadline)) {
      return false;
    }
  }
  return true;
}

bool TerminalProgram::WaitForModes(const termios& modes) const {
  const Clock::time_point deadline = Clock::now() + kLimit;
  while (!HaveSameModes(Settings(), modes)) {
    if (Clock::now() > deadline) {
      return false;
    }
    usleep(1000);
  }
  return true;
}

int TerminalProgram::Wait() {
  const Clock::time_point deadline = Clock::now() + kLimit;
  int status = 0;
  // What the program still prints must be read, or it would wait for that.
  while (waitpid(pid_, &status, WNOHANG) == 0) {
    if (Clock::now() > deadline) {
      Signal(SIGKILL);
    }
    ReadSome(Clock::now() + std::chrono::milliseconds(5));
  }
  pid_ = -1;
  while (person_ >= 0 && ReadSome(Clock::now())) {
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

termios TerminalProgram::Settings() const {
  termios settings{};
  if (tcgetattr(terminal_, &settings) != 0) {
    throw std::runtime_error("the terminal does not tell its settings");
  }
  return settings;
}

std::vector<std::string> ShellThatContinues(const std::vector<std::string>& job) {
  constexpr char kScript[] =
      R"sh(before=$(stty -g)
env "$@"
test "$(stty -g)" = "$before" && echo stopped as it was || echo stopped otherwise
stty "$before"
read line
echo "read '$line'"
fg >/dev/null)sh";
  std::vector<std::string> shell = {"sh", "-m", "-c", kScript, "sh"};
  shell.insert(shell.end(), job.begin(), job.end());
  return shell;
}

bool HaveSameModes(const termios& one, const termios& other) {
  return one.c_iflag == other.c_iflag && one.c_oflag == other.c_oflag &&
         one.c_cflag == other.c_cflag && one.c_lflag == other.c_lflag &&
         std::equal(std::begin(one.c_cc), std::end(one.c_cc), std::begin(other.c_cc));
}

}  // namespace kestrel::test
