// SPDX-License-Identifier: Apache-2.0
// The folders of boards: what kestrel-board removes, and what it leaves alone.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "board_command.h"

namespace kestrel::test {
namespace {

namespace fs = std::filesystem;

class BoardFolder : public BoardCommand {
 protected:
  std::string Path(const std::string& name) const { return folder_.path() + "/" + name; }

  void Write(const std::string& name, const std::string& content = "x\n") const {
    fs::create_directories(fs::path(Path(name)).parent_path());
    std::ofstream(Path(name)) << content;
  }

  /// What the user takes away in the end.
  void Remove(const std::string& name) const { fs::remove_all(Path(name)); }

  std::string Refusal(const std::string& name, const std::string& content) const {
    return "kestrel-board: " + Path(name) + ": holds what kestrel-board did not make (" + content +
           "); move it away, or choose another board name or KESTREL_BOARD_DIR\n";
  }

  std::string Remains(const std::string& name, const std::string& content) const {
    return "kestrel-board: " + Path(name) + " stays: it holds what kestrel-board did not make (" +
           content + ")\n";
  }

  void Kill(const std::string& name) {
    const pid_t board = ProcessOf(name);
    ASSERT_GT(board, 1);
    ASSERT_EQ(kill(board, SIGKILL), 0);
    while (!Board({"list"}).standard_output.empty()) {
      usleep(1000);
    }
    started_.clear();
  }
};

TEST_F(BoardFolder, StartRefusesOneThatNoBoardMade) {
  Write("demo/thesis");
  const ProgramResult start = Board({"start", "demo"});
  EXPECT_EQ(start.status, 1);
  EXPECT_EQ(start.standard_output, "");
  EXPECT_EQ(start.standard_error, Refusal("demo", "thesis"));
  EXPECT_EQ(Board({"run", "--name", "demo", "true"}).standard_error, Refusal("demo", "thesis"));
  EXPECT_TRUE(fs::exists(Path("demo/thesis")));
  Remove("demo");
}

TEST_F(BoardFolder, StartLeavesOthersAlone) {
  Write("other/thesis");
  Write("other/lock", "");
  Write("tool/lock", "4711\n");
  Write("tool/socket");
  fs::create_directory(Path("empty"));
  EXPECT_EQ(Start("bench").standard_error, "");
  EXPECT_EQ(Board({"list"}).standard_output, "bench\n");
  EXPECT_EQ(Board({"stop", "bench"}).status, 0);
  started_.clear();
  for (const char* name : {"other/thesis", "other/lock", "tool/lock", "tool/socket", "empty"}) {
    EXPECT_TRUE(fs::exists(Path(name))) << name;
    Remove(name);
  }
  Remove("other");
  Remove("tool");
}

TEST_F(BoardFolder, NumberInALockMakesNoBoard) {
  Write("old/lock", "4711\n");
  EXPECT_EQ(Board({"start", "old"}).standard_error, Refusal("old", "lock"));
  EXPECT_TRUE(fs::exists(Path("old/lock")));
  Remove("old");
}

TEST_F(BoardFolder, EmptyOneIsTaken) {
  fs::create_directory(Path("bench"));
  EXPECT_EQ(Start("bench").status, 0);
  EXPECT_EQ(Board({"line", "4"}).standard_output, "low\n");
}

TEST_F(BoardFolder, StopLeavesWhatOthersPutThere) {
  Start("bench");
  Write("bench/thesis");
  Write("bench/deep/socket");
  const ProgramResult stop = Board({"stop", "bench"});
  started_.clear();
  EXPECT_EQ(stop.status, 0);
  EXPECT_EQ(stop.standard_output, "board 'bench' has stopped\n");
  EXPECT_EQ(stop.standard_error, Remains("bench", "deep, thesis"));
  EXPECT_TRUE(fs::exists(Path("bench/thesis")));
  EXPECT_TRUE(fs::exists(Path("bench/deep/socket")));
  EXPECT_EQ(std::distance(fs::directory_iterator(Path("bench")), {}), 2);
  EXPECT_EQ(Board({"start", "bench"}).standard_error, Refusal("bench", "deep, thesis"));
  Remove("bench");
}

TEST_F(BoardFolder, RunLeavesWhatItsProgramPutsThere) {
  const std::string script = "touch " + Path("mine/thesis");
  const ProgramResult run = Board({"run", "--name", "mine", "sh", "-c", script});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.standard_error, Remains("mine", "thesis"));
  Remove("mine");
}

TEST_F(BoardFolder, OfAKilledBoardIsTakenApartByName) {
  Start("bench");
  Write("bench/thesis");
  Kill("bench");
  const ProgramResult next = Board({"run", "true"});
  EXPECT_EQ(next.status, 0);
  EXPECT_EQ(next.standard_error, Remains("bench", "thesis"));
  EXPECT_EQ(std::distance(fs::directory_iterator(Path("bench")), {}), 1);
  EXPECT_EQ(Board({"run", "true"}).standard_error, "") << "it is told once";
  Remove("bench");
}

TEST_F(BoardFolder, OfAKilledBoardIsRefusedByTheNextWhileSomethingElseIsThere) {
  Start("bench");
  Write("bench/a\nb");
  Kill("bench");
  EXPECT_EQ(Board({"start", "bench"}).standard_error, Refusal("bench", "a?b"));
  Remove("bench");
}

TEST_F(BoardFolder, LinkIsNotFollowed) {
  const TemporaryDirectory elsewhere;
  const std::string thesis = elsewhere.Write("socket", "x");
  Start("victim");
  fs::copy_file(Path("victim/lock"), elsewhere.path() + "/lock");
  fs::create_directory_symlink(elsewhere.path(), Path("demo"));
  const ProgramResult start = Board({"start", "demo"});
  EXPECT_EQ(start.status, 1);
  EXPECT_EQ(start.standard_error,
            "kestrel-board: " + Path("demo") +
                ": is in the way and not a board's folder; move it away, or choose another board "
                "name or KESTREL_BOARD_DIR\n");
  EXPECT_EQ(Board({"run", "true"}).status, 0);
  EXPECT_TRUE(fs::exists(thesis));
  EXPECT_TRUE(fs::is_symlink(Path("demo")));
  Remove("demo");
}

TEST_F(BoardFolder, LockThatIsALinkMakesNoBoard) {
  Start("bench");
  Write("demo/socket");
  fs::create_symlink(Path("bench/lock"), Path("demo/lock"));
  EXPECT_EQ(Board({"start", "demo"}).standard_error, Refusal("demo", "lock, socket"));
  EXPECT_EQ(Board({"list"}).standard_output, "bench\n");
  Remove("demo");
}

TEST_F(BoardFolder, PipeInPlaceOfALockMakesNobodyWait) {
  fs::create_directory(Path("demo"));
  ASSERT_EQ(mkfifo((Path("demo/lock")).c_str(), 0600), 0);
  EXPECT_EQ(Board({"list"}).standard_output, "");
  EXPECT_EQ(Board({"start", "demo"}).standard_error, Refusal("demo", "lock"));
  Remove("demo");
}

TEST_F(BoardFolder, UnfinishedOneOfAKilledStartGoes) {
  Write(".kestrel-board-abcdef/lock", "");
  fs::create_directory(Path(".kestrel-board-ghijkl"));
  Write(".kestrel-board-mnopqr/thesis");
  EXPECT_EQ(Board({"list"}).standard_output, "");
  EXPECT_EQ(Board({"run", "true"}).standard_error, "");
  EXPECT_FALSE(fs::exists(Path(".kestrel-board-abcdef")));
  EXPECT_FALSE(fs::exists(Path(".kestrel-board-ghijkl")));
  EXPECT_TRUE(fs::exists(Path(".kestrel-board-mnopqr/thesis")));
  Remove(".kestrel-board-mnopqr");
}

TEST_F(BoardFolder, NothingStaysOfAStartWithoutSpace) {
  const std::string script = R"(ulimit -f 0; trap '' XFSZ; exec "$0" "$@")";
  const ProgramResult start =
      RunProgram({"sh", "-c", script, KESTREL_BOARD_PROGRAM, "start", "bench"}, environment_);
  EXPECT_EQ(start.status, 1);
  EXPECT_EQ(start.standard_error, "kestrel-board: " + Path("bench") + ": File too large\n");
  EXPECT_TRUE(folder_.IsEmpty());
}

TEST_F(BoardFolder, StartThatIsKilledIsInNobodysWay) {
  const std::string killed = R"(ulimit -c 0; ulimit -f 0; exec "$0" start bench)";
  const ProgramResult start = RunProgram({"sh", "-c", killed, KESTREL_BOARD_PROGRAM}, environment_);
  EXPECT_EQ(start.status, 128 + SIGXFSZ);
  EXPECT_FALSE(folder_.IsEmpty());
  EXPECT_EQ(Board({"list"}).standard_output, "");
  const ProgramResult next = Board({"run", "--name", "bench", "true"});
  EXPECT_EQ(next.status, 0);
  EXPECT_EQ(next.standard_error, "");
  EXPECT_TRUE(folder_.IsEmpty());
}

TEST_F(BoardFolder, NothingStaysOfAStartWithAWrongConfiguration) {
  EXPECT_EQ(Board({"start", "bench", "--fault", "nonsense"}).status, 2);
  EXPECT_TRUE(folder_.IsEmpty());
}

TEST_F(BoardFolder, AllThatDevicesMakeIsRemoved) {
  // Links stand in for what would need a program that saves networks, and for a path with blanks.
  Start("bench");
  for (const char* name :
       {"network_status.new", "wifi-networks.json", "wifi-networks.json.new", "preload.so"}) {
    fs::create_symlink("/dev/null", Path("bench/") + name);
  }
  EXPECT_EQ(Board({"stop", "bench"}).standard_error, "");
  started_.clear();
  EXPECT_TRUE(folder_.IsEmpty());
}

class CommonFolder : public BoardFolder, public testing::WithParamInterface<mode_t> {};

TEST_P(CommonFolder, IsRefusedWhereOthersCanWrite) {
  ASSERT_EQ(chmod(folder_.path().c_str(), GetParam()), 0);
  char mode[8];
  snprintf(mode, sizeof mode, "%04o", GetParam());
  const std::string refusal = "kestrel-board: " + folder_.path() +
                              ": others can write to this folder (mode " + mode +
                              "); run chmod go-w on it, or set KESTREL_BOARD_DIR to another\n";
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"start", "bench"},
                                                    {"run", "true"},
                                                    {"list"},
                                                    {"show"},
                                                    {"exec", "bench", "true"},
                                                    {"stop", "bench"}}) {
    const ProgramResult result = Board(arguments);
    EXPECT_EQ(result.status, 1) << arguments.front();
    EXPECT_EQ(result.standard_error, refusal) << arguments.front();
  }
  ASSERT_EQ(chmod(folder_.path().c_str(), 0700), 0);
}

INSTANTIATE_TEST_SUITE_P(All, CommonFolder, testing::Values(0777, 01777, 0770, 0775, 0702));

TEST_F(BoardFolder, CommonOneMayBeReadByOthers) {
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  EXPECT_EQ(Board({"run", "true"}).status, 0);
}

TEST_F(BoardFolder, CommonOneIsMadePrivateWhateverTheMask) {
  const std::string script = "umask 0; KESTREL_BOARD_DIR=" + Path("d") +
                             " " KESTREL_BOARD_PROGRAM " run --name b stat -c %a " + Path("d") +
                             " " + Path("d/b");
  EXPECT_EQ(RunProgram({"sh", "-c", script}).standard_output, "700\n700\n");
  Remove("d");
}

TEST_F(BoardFolder, CommonOneOfSomebodyElseIsRefused) {
  const std::string somebody_elses = geteuid() == 0 ? Path("d") : "/usr";
  if (geteuid() == 0) {
    fs::create_directory(somebody_elses);
    ASSERT_EQ(chown(somebody_elses.c_str(), 12345, 12345), 0);
  }
  const ProgramResult result =
      RunProgram(Arguments({"start", "b"}), {{"KESTREL_BOARD_DIR", somebody_elses}});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error,
            "kestrel-board: " + somebody_elses +
                ": is not a folder of yours; set KESTREL_BOARD_DIR to one that is\n");
  Remove("d");
}

TEST_F(BoardFolder, StartsOfOneNameAtATimeGiveOneBoard) {
  const std::string script =
      R"(for i in 1 2 3 4 5 6; do "$0" start bench >>"$1" 2>>"$1" & done; wait; cat "$1")";
  const TemporaryDirectory output;
  const ProgramResult result = RunProgram(
      {"sh", "-c", script, KESTREL_BOARD_PROGRAM, output.path() + "/output"}, environment_);
  started_.emplace_back("bench");
  size_t running = 0;
  size_t refused = 0;
  std::istringstream lines(result.standard_output);
  for (std::string line; std::getline(lines, line);) {
    running += line == "board 'bench' is running" ? 1 : 0;
    refused += line == "kestrel-board: a board named 'bench' is running already" ? 1 : 0;
  }
  EXPECT_EQ(running, 1U) << result.standard_output;
  EXPECT_EQ(refused, 5U) << result.standard_output;
}

TEST_F(BoardFolder, StartsAndStopsAtATimeLeaveNothing) {
  const std::string script =
      R"(for i in 1 2 3 4; do (for j in 1 2 3 4 5; do "$0" start b$i && "$0" stop b$i; done) & )"
      "done; wait";
  const ProgramResult result =
      RunProgram({"sh", "-c", script, KESTREL_BOARD_PROGRAM}, environment_);
  EXPECT_EQ(result.standard_error, "");
  EXPECT_EQ(std::count(result.standard_output.begin(), result.standard_output.end(), '\n'), 40);
}

}  // namespace
}  // namespace kestrel::test
