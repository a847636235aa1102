// SPDX-License-Identifier: Apache-2.0
#include "support/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace kestrel::test {
namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("pipe2 failed");
    }
  }
  int Read() const { return ends[0]; }
  int Write() const { return ends[1]; }
  std::array<int, 2> ends{};
};

/// Reads what is there; at the end of the stream closes `descriptor` and sets it to -1.
void Drain(int& descriptor, std::string& text) {
  std::array<char, 4096> buffer;
  const ssize_t count = read(descriptor, buffer.data(), buffer.size());
  if (count > 0) {
    text.append(buffer.data(), static_cast<size_t>(count));
  } else {
    close(descriptor);
    descriptor = -1;
  }
}

/// How long processors have worked for a process.
std::chrono::nanoseconds ProcessorTime(pid_t process) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0) {
    throw std::runtime_error("there is no such process");
  }
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

bool IsIdle(pid_t process) {
  const std::chrono::nanoseconds before = ProcessorTime(process);
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  return ProcessorTime(process) - before < std::chrono::milliseconds(100);
}

ProgramResult RunProgram(const std::vector<std::string>& arguments,
                         const Environment& environment) {
  return BackgroundProgram(arguments, environment).Wait();
}

BackgroundProgram::BackgroundProgram(const std::vector<std::string>& arguments,
                                     const Environment& environment) {
  const Pipe output;
  const Pipe error;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output.Write(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, error.Write(), STDERR_FILENO);
  std::vector<std::string> argument_texts = arguments;
  Environment added = TakeAssignments(argument_texts);
  added.insert(environment.begin(), environment.end());
  std::vector<std::string> environment_texts = Merged(added);
  const int failure =
      posix_spawnp(&pid_, argument_texts.at(0).c_str(), &actions, nullptr,
                   Pointers(argument_texts).data(), Pointers(environment_texts).data());
  posix_spawn_file_actions_destroy(&actions);
  close(output.Write());
  close(error.Write());
  output_ = output.Read();
  error_ = error.Read();
  if (failure != 0) {
    throw std::runtime_error(argument_texts[0] + ": " + strerror(failure));
  }
}

BackgroundProgram::~BackgroundProgram() {
  if (pid_ > 0) {
    Signal(SIGKILL);
    Collect(std::chrono::seconds(5));
  }
}

void BackgroundProgram::Signal(int number) const { kill(pid_, number); }

bool BackgroundProgram::ReadSome(Clock::time_point deadline) {
  std::array<pollfd, 2> streams = {{{output_, POLLIN, 0}, {error_, POLLIN, 0}}};
  if (poll(streams.data(), streams.size(), MillisecondsUntil(deadline)) <= 0) {
    return false;
  }
  if (streams[0].revents != 0) {
    Drain(output_, result_.standard_output);
  }
  if (streams[1].revents != 0) {
    Drain(error_, result_.standard_error);
  }
  return true;
}

bool BackgroundProgram::WaitForOutput(const std::string& text, std::chrono::milliseconds limit) {
  const Clock::time_point deadline = Clock::now() + limit;
  while (result_.standard_output.find(text) == std::string::npos) {
    if (output_ < 0 || !ReadSome(deadline)) {
      return false;
    }
  }
  return true;
}

ProgramResult BackgroundProgram::Wait(std::chrono::milliseconds limit) {
  Collect(limit);
  return result_;
}

void BackgroundProgram::Collect(std::chrono::milliseconds limit) {
  const Clock::time_point deadline = Clock::now() + limit;
  while ((output_ >= 0 || error_ >= 0) && ReadSome(deadline)) {
  }
  if (output_ >= 0 || error_ >= 0) {
    Signal(SIGKILL);
    close(output_);
    close(error_);
    output_ = error_ = -1;
  }
  int status = 0;
  // One that has closed its streams may go on running.
  while (waitpid(pid_, &status, WNOHANG) == 0) {
    if (Clock::now() >= deadline) {
      Signal(SIGKILL);
    }
    usleep(200);
  }
  result_.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  pid_ = -1;
}

}  // namespace kestrel::test
