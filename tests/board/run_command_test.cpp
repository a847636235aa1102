// SPDX-License-Identifier: Apache-2.0
// kestrel-board run: one program on a board of its own.
#include <signal.h>

#include "board_command.h"

namespace kestrel::test {
namespace {

using RunCommand = BoardCommand;

TEST_F(RunCommand, UnmodifiedProgramFindsTheDevice) {
  const ProgramResult result = Board({"run", kProbe});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.standard_output, "level 1\n");
  EXPECT_EQ(result.standard_error, "");
}

TEST_F(RunCommand, ReturnsTheExitStatusOfTheProgram) {
  EXPECT_EQ(Board({"run", kProbe, "42"}).status, 42);
  EXPECT_EQ(Board({"run", "sh", "-c", "kill -KILL $$"}).status, 128 + SIGKILL);
  EXPECT_EQ(Board({"run", "sh", "-c", "kill -TERM $$"}).status, 128 + SIGTERM);
}

TEST_F(RunCommand, DoubleDashEndsTheOptions) {
  EXPECT_EQ(Board({"run", "--", kProbe, "7"}).status, 7);
  EXPECT_EQ(Board({"run", "--name", "x", "--", kProbe, "7"}).status, 7);
  EXPECT_EQ(Board({"run", "--name=x", kProbe, "7"}).status, 7);
}

TEST_F(RunCommand, OptionsBehindTheProgramAreThePrograms) {
  const ProgramResult result = Board({"run", "echo", "--name", "--", "--help", "--config"});
  EXPECT_EQ(result.standard_output, "--name -- --help --config\n");
}

TEST_F(RunCommand, StandardStreamsAreTheProgramsOwn) {
  const ProgramResult result = Board({"run", "sh", "-c", "echo out; echo err >&2"});
  EXPECT_EQ(result.standard_output, "out\n");
  EXPECT_EQ(result.standard_error, "err\n");
}

TEST_F(RunCommand, ProgramHasNoDescriptorMoreThanWithoutABoard) {
  const std::vector<std::string> list = {"sh", "-c", "exec ls /proc/$$/fd"};
  std::vector<std::string> run = list;
  run.insert(run.begin(), "run");
  EXPECT_EQ(Board(run).standard_output, RunProgram(list).standard_output);
}

TEST_F(RunCommand, ClosedStandardStreamsStayClosed) {
  const std::string board = KESTREL_BOARD_PROGRAM;
  const std::string script = board + " run sh -c '[ ! -e /proc/self/fd/1 ] && exit 6' >&- <&-";
  EXPECT_EQ(RunProgram({"sh", "-c", script}, environment_).status, 6);
}

TEST_F(RunCommand, ProgramThatCannotBeStartedIsReportedAsAShellWould) {
  const ProgramResult missing = Board({"run", "no-such-program"});
  EXPECT_EQ(missing.status, 127);
  EXPECT_EQ(missing.standard_error, "kestrel-board: no-such-program: No such file or directory\n");
  const ProgramResult forbidden = Board({"run", "/etc/passwd"});
  EXPECT_EQ(forbidden.status, 126);
  EXPECT_EQ(forbidden.standard_error, "kestrel-board: /etc/passwd: Permission denied\n");
}

class ForwardedSignal : public RunCommand, public testing::WithParamInterface<int> {};

TEST_P(ForwardedSignal, ReachesTheProgramOnce) {
  const std::string number = std::to_string(GetParam());
  const std::string script = "trap 'echo caught; caught=1' " + number +
                             "; echo waiting; until [ $caught ]; do sleep 0.01; done; sleep 0.05; "
                             "exit 33";
  BackgroundProgram board(Arguments({"run", "sh", "-c", script}), environment_);
  ASSERT_TRUE(board.WaitForOutput("waiting"));
  board.Signal(GetParam());
  const ProgramResult result = board.Wait();
  EXPECT_EQ(result.status, 33);
  EXPECT_EQ(result.standard_output, "waiting\ncaught\n");
}

INSTANTIATE_TEST_SUITE_P(All, ForwardedSignal,
                         testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2,
                                         SIGALRM, SIGWINCH));

TEST_F(RunCommand, EndsWhereItsParentIgnoresTheEndOfChildren) {
  const ProgramResult result = RunProgram(
      {"env", "--ignore-signal=CHLD", KESTREL_BOARD_PROGRAM, "run", kProbe, "3"}, environment_);
  EXPECT_EQ(result.status, 3);
}

TEST_F(RunCommand, BoardThatWasKilledIsClearedAwayByTheNext) {
  BackgroundProgram board(Arguments({"run", "sleep", "1"}), environment_);
  while (Board({"list"}).standard_output.empty()) {
    usleep(1000);
  }
  board.Signal(SIGKILL);
  board.Wait();
  EXPECT_FALSE(folder_.IsEmpty());
  EXPECT_EQ(Board({"run", "true"}).status, 0);
}

TEST_F(RunCommand, WorksWhereItsPathHasSpaces) {
  const TemporaryDirectory copy;
  const std::string script =
      "mkdir -p \"$0/a b/bin\" \"$0/a b/" KESTREL_PRELOAD_FOLDER "\" && cp " KESTREL_BOARD_PROGRAM
      " \"$0/a b/bin\" && cp \"$(dirname " KESTREL_BOARD_PROGRAM ")/../" KESTREL_PRELOAD_FOLDER
      "/preload.so\" \"$0/a b/" KESTREL_PRELOAD_FOLDER "\"";
  ASSERT_EQ(RunProgram({"sh", "-c", script, copy.path()}).status, 0);
  const ProgramResult result =
      RunProgram({copy.path() + "/a b/bin/kestrel-board", "run", kProbe}, environment_);
  EXPECT_EQ(result.standard_output, "level 1\n");
  EXPECT_EQ(result.standard_error, "");
}

TEST_F(RunCommand, BoardsLieInTheUsersRuntimeFolder) {
  const Environment environment = {{"KESTREL_BOARD_DIR", ""}, {"XDG_RUNTIME_DIR", folder_.path()}};
  const std::string script =
      "stat -c %a " + folder_.path() + "/kestrel-board " + folder_.path() + "/kestrel-board/run-*";
  const ProgramResult result =
      RunProgram({"sh", "-c", "umask 0; exec " KESTREL_BOARD_PROGRAM " run sh -c '" + script + "'"},
                 environment);
  EXPECT_EQ(result.standard_output, "700\n700\n") << "nobody else may enter";
}

TEST_F(RunCommand, BoardsRunInParallelWithoutSeeingEachOther) {
  BackgroundProgram first(Arguments({"run", kProbe, "wait"}), environment_);
  BackgroundProgram second(Arguments({"run", kProbe, "wait"}), environment_);
  EXPECT_TRUE(first.WaitForOutput("level 1\nwaiting"));
  EXPECT_TRUE(second.WaitForOutput("level 1\nwaiting"));
  first.Signal(SIGTERM);
  second.Signal(SIGTERM);
  EXPECT_EQ(first.Wait().status, 0);
  EXPECT_EQ(second.Wait().status, 0);
}

TEST_F(RunCommand, BoardCanBeReachedFromOutsideByItsName) {
  BackgroundProgram board(Arguments({"run", "--name", "mine", kProbe, "wait"}), environment_);
  ASSERT_TRUE(board.WaitForOutput("waiting"));
  EXPECT_EQ(Board({"list"}).standard_output, "mine\n");
  EXPECT_EQ(Board({"line", "4"}).standard_output, "high\n");
  EXPECT_EQ(Board({"line", "4", "--board", "mine"}).standard_output, "high\n");
  const ProgramResult stop = Board({"stop", "mine"});
  EXPECT_EQ(stop.status, 2);
  EXPECT_EQ(stop.standard_error, "kestrel-board: a board made by run stops with its program\n");
  board.Signal(SIGTERM);
  EXPECT_EQ(board.Wait().status, 0);
}

TEST_F(RunCommand, ProgramsOnABoardMayRunFurtherOnesOnIt) {
  const std::string board = KESTREL_BOARD_PROGRAM;
  const ProgramResult result = Board({"run", "sh", "-c", kProbe + "; " + board + " line 4"});
  EXPECT_EQ(result.standard_output, "level 1\nhigh\n");
}

TEST_F(RunCommand, BoardInsideABoardIsAnother) {
  const std::string nested = std::string(KESTREL_BOARD_PROGRAM) + " run " + kProbe;
  const ProgramResult result =
      Board({"run", "sh", "-c", nested + "; " KESTREL_BOARD_PROGRAM " line 4"});
  EXPECT_EQ(result.standard_output, "level 1\nlow\n");
}

TEST_F(RunCommand, ExistingPreloadsAndSanitizerOptionsAreKept) {
  Environment environment = environment_;
  environment["LD_PRELOAD"] = "libm.so.6";
  environment["ASAN_OPTIONS"] = "verify_asan_link_order=0:detect_leaks=0";
  const ProgramResult result = RunProgram(
      Arguments({"run", "sh", "-c", "echo $LD_PRELOAD; echo $ASAN_OPTIONS"}), environment);
  EXPECT_NE(result.standard_output.find("preload.so:libm.so.6\n"), std::string::npos);
  EXPECT_NE(result.standard_output.find("detect_leaks=0:verify_asan_link_order=0\n"),
            std::string::npos);
}

TEST_F(RunCommand, BadArgumentsAreRefusedInOneLine) {
  const std::string which = "run: which program? Give PROGRAM [ARG...] after the options";
  ExpectUsageError({"run"}, which);
  ExpectUsageError({"run", "--config"}, which);
  ExpectUsageError({"run", "--name", "x", "--fault"}, which);
  ExpectUsageError({"run", "--"}, "run: which program? Give PROGRAM [ARG...] after the options");
  ExpectUsageError({"run", "--nam", "x", "true"},
                   "The following argument was not expected: --nam (see kestrel-board --help)");
  ExpectUsageError({"run", "--name", "a/b", "true"},
                   "board name 'a/b': 1 to 32 letters, digits, '-', '_' and '.', not beginning "
                   "with '.'");
  ExpectUsageError({"run", "--name", ".", "true"},
                   "board name '.': 1 to 32 letters, digits, '-', '_' and '.', not beginning "
                   "with '.'");
}

TEST_F(RunCommand, HelpAndVersionGoToStandardOutput) {
  const ProgramResult help = Board({"run", "--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.standard_output.find("--fault"), std::string::npos);
  EXPECT_EQ(help.standard_error, "");
  EXPECT_NE(Board({"--help"}).standard_output.find("Examples:"), std::string::npos);
  EXPECT_EQ(Board({"--version"}).standard_output.rfind("kestrel-board ", 0), 0U);
  const std::string full = KESTREL_BOARD_PROGRAM " --version >/dev/full";
  EXPECT_EQ(RunProgram({"sh", "-c", full}).status, 1);
}

TEST_F(RunCommand, TooLongAFolderIsExplained) {
  const TemporaryDirectory deep;
  const std::string folder = deep.path() + "/" + std::string(100, 'x');
  const ProgramResult result =
      RunProgram(Arguments({"run", "true"}), {{"KESTREL_BOARD_DIR", folder}});
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.standard_error.find("longer than a socket's path may be"), std::string::npos);
}

}  // namespace
}  // namespace kestrel::test
