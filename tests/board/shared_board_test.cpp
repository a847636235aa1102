// SPDX-License-Identifier: Apache-2.0
// start, exec, stop, show and line: a board that several programs share.
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <list>
#include <nlohmann/json.hpp>
#include <optional>

#include "board_command.h"
#include "stopped_process.h"

namespace kestrel::test {
namespace {

using nlohmann::json;

using SharedBoard = BoardCommand;

/// A connection that says nothing.
class SilentClient {
 public:
  explicit SilentClient(const std::string& path)
      : socket_(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  ~SilentClient() { close(socket_); }
  SilentClient(const SilentClient&) = delete;
  SilentClient& operator=(const SilentClient&) = delete;

  bool IsTurnedAway() const { return EndsWithin(20000); }
  bool HasEnded() const { return EndsWithin(0); }

 private:
  bool EndsWithin(int milliseconds) const {
    pollfd end{socket_, POLLIN, 0};
    char byte = 0;
    return poll(&end, 1, milliseconds) == 1 && read(socket_, &byte, 1) == 0;
  }

  int socket_;
};

TEST_F(SharedBoard, StartsAndStops) {
  const ProgramResult start = Start("bench");
  EXPECT_EQ(start.status, 0);
  EXPECT_EQ(start.standard_output, "board 'bench' is running\n");
  EXPECT_EQ(Board({"list"}).standard_output, "bench\n");
  const ProgramResult stop = Board({"stop", "bench"});
  EXPECT_EQ(stop.status, 0);
  EXPECT_EQ(stop.standard_output, "board 'bench' has stopped\n");
  EXPECT_EQ(Board({"list"}).standard_output, "");
  started_.clear();
}

TEST_F(SharedBoard, KeepsItsStateBetweenPrograms) {
  Start("bench");
  EXPECT_EQ(Board({"line", "4"}).standard_output, "low\n");
  EXPECT_EQ(Board({"exec", "bench", kProbe}).standard_output, "level 1\n");
  EXPECT_EQ(Board({"line", "4"}).standard_output, "high\n");
}

TEST_F(SharedBoard, ExecReturnsTheProgramsStatus) {
  Start("bench");
  EXPECT_EQ(Board({"exec", "bench", "--", kProbe, "9"}).status, 9);
  EXPECT_EQ(Board({"exec", "bench", kProbe, "9"}).status, 9);
  EXPECT_EQ(Board({"exec", "bench", "no-such-program"}).status, 127);
}

TEST_F(SharedBoard, LineOfARunningProgramIsBusyForAnother) {
  Start("bench");
  BackgroundProgram holder(Arguments({"exec", "bench", kProbe, "wait"}), environment_);
  ASSERT_TRUE(holder.WaitForOutput("waiting"));
  const ProgramResult second = Board({"exec", "bench", kProbe});
  EXPECT_EQ(second.standard_output, "errno 16\n");
  holder.Signal(SIGKILL);
  holder.Wait();
  EXPECT_EQ(Board({"exec", "bench", kProbe}).standard_output, "level 1\n");
}

TEST_F(SharedBoard, ProgramOfAStoppedBoardFindsItsDeviceGone) {
  Start("bench");
  const std::string script = KESTREL_BOARD_PROGRAM " stop bench >/dev/null; exec " + kProbe;
  const ProgramResult result = Board({"exec", "bench", "sh", "-c", script});
  started_.clear();
  EXPECT_EQ(result.standard_output, "errno 19\n");
  EXPECT_EQ(result.standard_error,
            "[Kestrel:GPIO] Problem opening GPIO chip: No such device (19)\n");
}

class DescriptorOfAStoppedBoard : public SharedBoard,
                                  public testing::WithParamInterface<const char*> {};

TEST_P(DescriptorOfAStoppedBoard, IsClosedWithoutAWord) {
  Start("bench");
  const std::string stop = KESTREL_BOARD_PROGRAM " stop bench >/dev/null";
  const ProgramResult result =
      Board({"exec", "bench", KESTREL_BOARD_DESCRIPTOR_PROBE, GetParam(), stop});
  started_.clear();
  EXPECT_EQ(result.standard_output, "0 4242\n");
  EXPECT_EQ(result.standard_error, "");
}

INSTANTIATE_TEST_SUITE_P(All, DescriptorOfAStoppedBoard,
                         testing::Values("/dev/gpiochip0", "/dev/warden", "/dev/ttyS0",
                                         "/var/run/network_status"));

TEST_F(SharedBoard, KeepsNothingOpenThatItsStarterHas) {
  const std::string script = std::string("exec 9>") + folder_.path() +
                             "/file; flock 9; " KESTREL_BOARD_PROGRAM " start bench";
  EXPECT_EQ(RunProgram({"sh", "-c", script}, environment_).status, 0);
  started_.emplace_back("bench");
  EXPECT_EQ(RunProgram({"flock", "--nonblock", folder_.path() + "/file", "true"}).status, 0);
  EXPECT_EQ(RunProgram({"rm", folder_.path() + "/file"}).status, 0);
}

// The undefined-behaviour sanitizer opens a pipe to look at an object, and ends a program that has
// no descriptor left for it.
#ifndef KESTREL_UNDEFINED_BEHAVIOUR_SANITIZER
class BoardOfFortyDescriptors : public SharedBoard {
 protected:
  BoardOfFortyDescriptors() {
    const std::string start = "ulimit -n 40; " KESTREL_BOARD_PROGRAM " start bench";
    EXPECT_EQ(RunProgram({"sh", "-c", start}, environment_).status, 0);
    started_.emplace_back("bench");
  }
};

TEST_F(BoardOfFortyDescriptors, IsNotHarmedByAProgramThatOpensMore) {
  const std::string open_many =
      "for i in $(seq 3 60); do eval \"exec $i</dev/gpiochip0\" 2>/dev/null || exit 5; done";
  EXPECT_EQ(Board({"exec", "bench", "bash", "-c", open_many}).status, 5);
  EXPECT_EQ(Board({"exec", "bench", kProbe}).standard_output, "level 1\n");
}

TEST_F(BoardOfFortyDescriptors, TurnsAwayWhoeverComesWhenItHasNone) {
  {
    std::list<SilentClient> clients;
    for (int i = 0; i < 40; ++i) {
      clients.emplace_back(folder_.path() + "/bench/socket");
    }
    EXPECT_TRUE(clients.back().IsTurnedAway());
  }
  EXPECT_EQ(Board({"exec", "bench", kProbe}).standard_output, "level 1\n");
}

TEST_F(BoardOfFortyDescriptors, GivesThePlacesOfThoseWhoHaveGoneToWhoeverComesNext) {
  std::list<SilentClient> clients;
  for (int i = 0; i < 40; ++i) {
    clients.emplace_back(folder_.path() + "/bench/socket");
  }
  ASSERT_TRUE(clients.back().IsTurnedAway());
  std::optional<SilentClient> next;
  {
    // It sees those who go and the one who comes at once.
    const StoppedProcess board(ProcessOf("bench"));
    clients.clear();
    next.emplace(folder_.path() + "/bench/socket");
  }
  EXPECT_EQ(Board({"exec", "bench", kProbe}).standard_output, "level 1\n");
  EXPECT_FALSE(next->HasEnded());
}
#endif

TEST_F(SharedBoard, ProgramWithoutStandardStreamsReachesItsDevices) {
  Start("bench");
  for (const char* const closed : {" <&-", " 2>&-", " <&- 2>&-"}) {
    EXPECT_EQ(Board({"exec", "bench", "sh", "-c", kProbe + closed}).standard_output, "level 1\n")
        << closed;
  }
}

TEST_F(SharedBoard, SaysWhatIsWrongInOneCall) {
  std::array<int, 2> calls{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, calls.data()), 0);
  const std::string stop =
      "exec " KESTREL_BOARD_PROGRAM " stop none 2>&" + std::to_string(calls[1]);
  EXPECT_EQ(RunProgram({"bash", "-c", stop}, environment_).status, 1);
  close(calls[1]);
  std::array<char, 200> text{};
  const ssize_t size = read(calls[0], text.data(), text.size());
  EXPECT_EQ(std::string(text.data(), static_cast<size_t>(std::max<ssize_t>(size, 0))),
            "kestrel-board: no board named 'none' is running (see kestrel-board list)\n");
  EXPECT_EQ(read(calls[0], text.data(), text.size()), 0);
  close(calls[0]);
}

TEST_F(SharedBoard, NameCanBeTakenOnlyOnce) {
  Start("bench");
  ExpectUsageError({"start", "bench"}, "a board named 'bench' is running already");
  ExpectUsageError({"run", "--name", "bench", "true"}, "a board named 'bench' is running already");
}

TEST_F(SharedBoard, NameOfAKilledBoardCanBeTakenAgain) {
  Start("bench");
  const pid_t board = ProcessOf("bench");
  ASSERT_GT(board, 1);
  ASSERT_EQ(kill(board, SIGKILL), 0);
  while (!Board({"list"}).standard_output.empty()) {
    usleep(1000);
  }
  started_.clear();
  EXPECT_EQ(Board({"line", "4"}).status, 1);
  EXPECT_EQ(Start("bench").status, 0);
  EXPECT_EQ(Board({"line", "4"}).standard_output, "low\n");
}

class EndingSignal : public SharedBoard, public testing::WithParamInterface<int> {};

TEST_P(EndingSignal, StopsABoardThatCleansUp) {
  Start("bench");
  const pid_t board = ProcessOf("bench");
  ASSERT_GT(board, 1);
  EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(board) + "/cwd"), "/");
  EXPECT_EQ(getsid(board), board) << "the terminal's signals must not reach it";
  kill(board, GetParam());
  started_.clear();
  for (int i = 0; i < 5000 && !folder_.IsEmpty(); ++i) {
    usleep(1000);
  }
}

INSTANTIATE_TEST_SUITE_P(All, EndingSignal, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(SharedBoard, MayLieInARelativeFolder) {
  const std::string board = KESTREL_BOARD_PROGRAM;
  const std::string script = "cd " + folder_.path() + " && export KESTREL_BOARD_DIR=rel && " +
                             board + " start b >/dev/null && cd / && cd - >/dev/null && " + board +
                             " exec b " + kProbe + " && " + board + " stop b && rmdir rel";
  const ProgramResult result = RunProgram({"sh", "-c", script});
  EXPECT_EQ(result.standard_output, "level 1\nboard 'b' has stopped\n") << result.standard_error;
}

TEST_F(SharedBoard, CommandsWantToKnowWhichOfSeveralBoards) {
  Start("one");
  Start("two");
  ExpectUsageError({"line", "4"},
                   "several boards are running (one, two); choose one with --board NAME");
  EXPECT_EQ(Board({"line", "4", "--board", "two"}).standard_output, "low\n");
}

TEST_F(SharedBoard, CommandsWithoutABoardSayHowToStartOne) {
  const ProgramResult result = Board({"show"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error,
            "kestrel-board: no board is running; start one with: kestrel-board start NAME\n");
  EXPECT_EQ(Board({"stop", "nobody"}).standard_error,
            "kestrel-board: no board named 'nobody' is running (see kestrel-board list)\n");
  EXPECT_EQ(Board({"exec", "nobody", "true"}).status, 1);
}

TEST_F(SharedBoard, LinesAreDrivenFromOutsideUntilReleased) {
  Start("bench");
  EXPECT_EQ(Board({"line", "7", "high"}).standard_output, "high\n");
  EXPECT_EQ(Board({"line", "7"}).standard_output, "high\n");
  EXPECT_EQ(Board({"line", "7", "low"}).standard_output, "low\n");
  EXPECT_EQ(Board({"line", "7", "release"}).standard_output, "low\n");
  const json line = json::parse(Board({"line", "7", "--json"}).standard_output);
  EXPECT_EQ(line, json({{"line", 7}, {"level", "low"}, {"direction", "input"}}));
}

TEST_F(SharedBoard, DrivingAnOutputSaysWhoWins) {
  Start("bench");
  BackgroundProgram holder(Arguments({"exec", "bench", kProbe, "wait"}), environment_);
  ASSERT_TRUE(holder.WaitForOutput("waiting"));
  const ProgramResult result = Board({"line", "4", "low"});
  EXPECT_EQ(result.standard_output, "high\n");
  EXPECT_EQ(result.standard_error,
            "kestrel-board: line 4 stays high: it is an output that a program drives\n");
  EXPECT_EQ(Board({"line", "4", "release"}).standard_error, "");
}

TEST_F(SharedBoard, ShowTellsTheStateOfEveryLineInUse) {
  Start("bench");
  Board({"line", "7", "high"});
  BackgroundProgram holder(Arguments({"exec", "bench", kProbe, "wait"}), environment_);
  ASSERT_TRUE(holder.WaitForOutput("waiting"));
  EXPECT_EQ(Board({"show"}).standard_output.rfind(
                "board: bench\n"
                "gpio: /dev/gpiochip0, label \"kestrel-board\", 32 lines\n"
                "  line   4  high  output, push-pull, used by kestrel\n"
                "  line   7  high  input, driven high from outside\n"
                "  30 idle inputs, low\n",
                0),
            0U);
}

TEST_F(SharedBoard, EverythingThatPrintsPrintsJsonToo) {
  const json started = json::parse(Start("bench", {"--json"}).standard_output);
  EXPECT_EQ(started, json({{"board", "bench"}, {"state", "running"}}));
  EXPECT_EQ(json::parse(Board({"list", "--json"}).standard_output).at("boards").at(0), "bench");
  const json state = json::parse(Board({"show", "--json"}).standard_output);
  EXPECT_EQ(state.at("board"), "bench");
  EXPECT_EQ(state.at("gpio").at("label"), "kestrel-board");
  EXPECT_EQ(state.at("gpio").at("lines").size(), 32U);
  EXPECT_TRUE(json::parse(Board({"fault", "--json"}).standard_output).at("faults").empty());
  const json stopped = json::parse(Board({"stop", "bench", "--json"}).standard_output);
  EXPECT_EQ(stopped.at("state"), "stopped");
  started_.clear();
}

TEST_F(SharedBoard, FullStandardOutputIsAnError) {
  Start("bench");
  const ProgramResult result = RunProgram(
      {"sh", "-c", std::string(KESTREL_BOARD_PROGRAM) + " show >/dev/full"}, environment_);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error, "kestrel-board: standard output cannot be written\n");
}

TEST_F(SharedBoard, BadArgumentsAreRefusedInOneLine) {
  Start("bench");
  ExpectUsageError({"line", "32"}, "line 32: the chip has lines 0 to 31");
  ExpectUsageError({"line", "x"},
                   "NUMBER: must be the offset of a line, such as 4, not 'x' (see kestrel-board "
                   "--help)");
  ExpectUsageError({"line", "-1"},
                   "NUMBER: must be the offset of a line, such as 4, not '-1' (see kestrel-board "
                   "--help)");
  ExpectUsageError({"line", "4", "up"},
                   "LEVEL: must be low, high or release, not 'up' (see kestrel-board --help)");
  ExpectUsageError({"line"}, "NUMBER is required (see kestrel-board --help)");
  ExpectUsageError({"exec", "bench"},
                   "exec: which program? Give PROGRAM [ARG...] after the options");
  for (const char* const command : {"list", "show", "fault", "network", "wifi"}) {
    ExpectUsageError({command, "--bogus"},
                     "The following argument was not expected: --bogus (see kestrel-board --help)");
  }
  ExpectUsageError({"begin"},
                   "there is no command 'begin' (known: run, start, exec, stop, list, show, fault, "
                   "line, uart, network, wifi)");
  ExpectUsageError({}, "A subcommand is required (see kestrel-board --help)");
}

}  // namespace
}  // namespace kestrel::test
