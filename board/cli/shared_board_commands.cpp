// SPDX-License-Identifier: Apache-2.0
// start, exec and stop: a board that several programs share.
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/board_options.h"
#include "cli/command_context.h"
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

using nlohmann::json;

/// What the process that serves a board says when programs can reach it; a text otherwise.
constexpr char kReady = '\0';

struct SharedBoardOptions {
  BoardOptions board;
  std::string name;
};

/// Leaves the terminal and its session, and stops on the usual signals.
class Daemon {
 public:
  explicit Daemon(EventLoop& loop) : loop_(loop) {
    setsid();
    const UniqueFd null(open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      dup2(null.get(), stream);
    }
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
      sigaddset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    signals_ = UniqueFd(signalfd(-1, &signals, SFD_CLOEXEC));
    loop_.Watch(signals_.get(), [this] { loop_.Stop(); });
  }

 private:
  EventLoop& loop_;
  UniqueFd signals_;
};

void Serve(Board& board, EventLoop& loop, BoardDirectory& directory, int ready) {
  directory.Adopt();
  const Server server(board, loop, directory.SocketPath(), [&loop] { loop.Stop(); });
  const Daemon daemon(loop);
  // A folder that somebody wants to unmount must not be held by a board.
  if (chdir("/") != 0 || write(ready, &kReady, 1) != 1) {
    return;
  }
  close(ready);
  loop.Run();
}

/// The same, and hands what went wrong to the process that started this one, which tells the user.
void ServeOrExplain(Board& board, EventLoop& loop, BoardDirectory& directory, int ready) {
  try {
    Serve(board, loop, directory, ready);
  } catch (const BoardError& error) {
    const std::string reason = error.what();
    if (write(ready, reason.data(), reason.size()) < 0) {
      return;  // Then the other process says that the board did not start.
    }
  }
}

/// Waits for what the process that serves the board says first. Throws BoardError.
void AwaitReady(const UniqueFd& answer, const std::string& name) {
  std::array<char, PIPE_BUF> text{};
  const ssize_t count = read(answer.get(), text.data(), text.size());
  if (count <= 0) {
    throw BoardError("board '" + name + "' did not start");
  }
  if (text.front() != kReady) {
    throw BoardError(std::string(text.data(), static_cast<size_t>(count)));
  }
}

/// Forks the process that serves the board; returns when programs can reach it.
void Start(const SharedBoardOptions& options) {
  // A board must not keep open, or locked, what its starter happens to have open.
  close_range(STDERR_FILENO + 1, ~0U, 0);
  EventLoop loop;
  BoardDirectory directory(options.name, DeviceFiles());
  const std::unique_ptr<Board> board =
      options.board.MakeBoard(options.name, {options.name, directory.path()}, loop);
  std::array<int, 2> ready{};
  if (pipe2(ready.data(), O_CLOEXEC) != 0) {
    ThrowErrno("pipe2");
  }
  const pid_t child = fork();
  if (child < 0) {
    ThrowErrno("fork");
  }
  if (child == 0) {
    close(ready[0]);
    ServeOrExplain(*board, loop, directory, ready[1]);
    return;
  }
  directory.Disown();
  close(ready[1]);
  AwaitReady(UniqueFd(ready[0]), options.name);
}

void AddStartCommand(CLI::App& app, const CommandContext& context) {
  auto options = std::make_shared<SharedBoardOptions>();
  CLI::App* command = app.add_subcommand("start", "Start a board that several programs share");
  command->add_option("NAME", options->name, "name of the board")->required();
  options->board.AddTo(*command);
  context.AddJsonOption(*command);
  command->callback([options, &context] {
    const pid_t starter = getpid();
    Start(*options);
    if (getpid() == starter) {
      context.Print({{"board", options->name}, {"state", "running"}}, [&](std::ostream& out) {
        out << "board '" << options->name << "' is running\n";
      });
    }
  });
}

void AddExecCommand(CLI::App& app, ProgramArguments& programs) {
  auto name = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("exec", "Run a program on a board that was started");
  command->add_option("NAME", *name, "name of the board")->required();
  const ProgramArguments::Program program = programs.Expect(*command, 1);
  command->callback([name, program] {
    const json state = CommandContext::AskBoard(*name, {{"paths", true}});
    BoardEnvironment(SocketPathOf(*name), state.at("paths"), state.at("files"))
        .BecomeProgram(*program);
  });
  command->footer(
      "The program and its arguments come last: kestrel-board exec NAME [--] PROGRAM [ARG...]");
}

void AddStopCommand(CLI::App& app, const CommandContext& context) {
  auto name = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("stop", "Stop a board that was started");
  command->add_option("NAME", *name, "name of the board")->required();
  context.AddJsonOption(*command);
  command->callback([name, &context] {
    const UniqueFd watch = WatchBoard(*name);
    CommandContext::AskBoard(*name, {{"stop", true}});
    WaitUntilStopped(watch);
    TellWhatStays(*name);
    context.Print({{"board", *name}, {"state", "stopped"}},
                  [&](std::ostream& out) { out << "board '" << *name << "' has stopped\n"; });
  });
}

}  // namespace

void AddSharedBoardCommands(CLI::App& app, ProgramArguments& programs,
                            const CommandContext& context) {
  AddStartCommand(app, context);
  AddExecCommand(app, programs);
  AddStopCommand(app, context);
}

}  // namespace kestrel::board
