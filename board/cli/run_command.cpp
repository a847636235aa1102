// SPDX-License-Identifier: Apache-2.0
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "cli/board_options.h"
#include "cli/commands.h"
#include "cli/program_arguments.h"
#include "devices/device.h"
#include "host/board_directory.h"
#include "host/error.h"
#include "host/event_loop.h"
#include "host/program.h"
#include "server/server.h"

namespace kestrel::board {
namespace {

/// Signals that are not the program's: those that cannot be caught, that stop and continue this
/// process as the terminal's job, that its own mistakes raise, and that tell it of its child.
constexpr int kNotForwarded[] = {SIGKILL, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU, SIGCONT, SIGSEGV,
                                 SIGBUS,  SIGFPE,  SIGILL,  SIGTRAP, SIGABRT, SIGSYS,  SIGPIPE};

/// Turns the end of the child and signals for it into events of a loop.
class ChildWatch {
 public:
  explicit ChildWatch(EventLoop& loop) : loop_(loop) {
    // Where it is ignored, the kernel keeps no exit status.
    signal(SIGCHLD, SIG_DFL);
    sigset_t signals;
    sigfillset(&signals);
    for (const int number : kNotForwarded) {
      sigdelset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    signals_ = UniqueFd(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!signals_.valid()) {
      ThrowErrno("signalfd");
    }
    loop_.Watch(signals_.get(), [this] { Receive(); });
  }
  ~ChildWatch() { loop_.Unwatch(signals_.get()); }
  ChildWatch(const ChildWatch&) = delete;
  ChildWatch& operator=(const ChildWatch&) = delete;

  void SetChild(pid_t child) { child_ = child; }
  int exit_status() const { return exit_status_; }

 private:
  void Receive() {
    signalfd_siginfo info{};
    while (read(signals_.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
      // What the terminal sends (SI_KERNEL), it has sent to the program as well.
      if (info.ssi_signo != SIGCHLD && info.ssi_code != SI_KERNEL) {
        kill(child_, static_cast<int>(info.ssi_signo));
      }
    }
    Reap();
  }

  void Reap() {
    int status = 0;
    if (waitpid(child_, &status, WNOHANG) == child_) {
      exit_status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
      loop_.Stop();
    }
  }

  EventLoop& loop_;
  UniqueFd signals_;
  pid_t child_ = -1;
  int exit_status_ = 0;
};

struct RunOptions {
  BoardOptions board;
  std::optional<std::string> given_name;

  std::string Name() const { return given_name.value_or("run-" + std::to_string(getpid())); }
};

int Run(const RunOptions& options, const std::vector<std::string>& program) {
  EventLoop loop;
  const BoardDirectory directory(options.Name(), DeviceFiles());
  const std::unique_ptr<Board> board = options.board.MakeBoard(
      options.Name(), {options.given_name.value_or(""), directory.path()}, loop);
  const Server server(*board, loop, directory.SocketPath(),
                      [] { throw UsageError("a board made by run stops with its program"); });
  ChildWatch watch(loop);
  const BoardEnvironment environment(directory.SocketPath(), board->Paths(), board->Files());
  watch.SetChild(environment.StartProgram(program));
  loop.Run();
  return watch.exit_status();
}

}  // namespace

void AddRunCommand(CLI::App& app, ProgramArguments& programs, int& exit_status) {
  auto options = std::make_shared<RunOptions>();
  CLI::App* command = app.add_subcommand(
      "run", "Run a program on a board of its own and return the program's exit status");
  command->add_option("--name", options->given_name,
                      "name of the board, for commands from outside");
  options->board.AddTo(*command);
  const ProgramArguments::Program program = programs.Expect(*command, 0);
  command->callback([options, program, &exit_status] { exit_status = Run(*options, *program); });
  command->footer(
      "The program and its arguments come last: kestrel-board run [OPTIONS] [--] PROGRAM [ARG...]");
}

}  // namespace kestrel::board
