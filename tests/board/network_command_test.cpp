// SPDX-License-Identifier: Apache-2.0
// The networking service's status file of a board.
#include <sys/inotify.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "board_command.h"

namespace kestrel::test {
namespace {

using nlohmann::json;

class NetworkCommands : public BoardCommand {
 protected:
  /// What a program on the board reads from the file, or what it cannot.
  ProgramResult Read() const { return Board({"exec", "bench", "cat", "/var/run/network_status"}); }

  std::string StateWith(const std::string& configuration) const {
    const std::string file = files_.Write("b.toml", configuration);
    const ProgramResult result =
        Board({"run", "--config", file, "--", KESTREL_BOARD_PROGRAM, "network", "--json"});
    EXPECT_EQ(result.status, 0) << result.standard_error;
    const json state = json::parse(result.standard_output);
    return state.at("state").get<std::string>() + ":" + state.value("bytes", "none");
  }

  void ExpectRefused(const std::string& name, const std::string& content,
                     const std::string& reason) {
    const std::string path = files_.Write(name, content);
    ExpectUsageError({"run", "--config", path, "true"}, path + reason);
  }

  std::string StatusFile() const { return folder_.path() + "/bench/network_status"; }

  const TemporaryDirectory files_;
};

TEST_F(NetworkCommands, NetworkingIsReadyUnlessSaidOtherwise) {
  Start("bench");
  EXPECT_EQ(Board({"network"}).standard_output, "ready\n");
  EXPECT_EQ(Read().standard_output, "\x01\x01\x01\x01\x01");
}

TEST_F(NetworkCommands, StatusChangesWhileProgramsRun) {
  Start("bench");
  EXPECT_EQ(Board({"network", "down"}).standard_output, "down\n");
  EXPECT_EQ(Board({"network"}).standard_output, "down\n");
  EXPECT_EQ(Read().standard_output, std::string(5, '\0'));
  EXPECT_EQ(Board({"network", "ready"}).standard_output, "ready\n");
  EXPECT_EQ(Read().standard_output, std::string(5, '\1'));
}

TEST_F(NetworkCommands, AbsentFileIsNotFound) {
  Start("bench");
  EXPECT_EQ(Board({"network", "absent"}).standard_output, "absent\n");
  EXPECT_EQ(Board({"network", "absent"}).standard_output, "absent\n");
  EXPECT_EQ(Read().standard_error, "cat: /var/run/network_status: No such file or directory\n");
  Board({"network", "ready"});
  EXPECT_EQ(Read().status, 0);
}

TEST_F(NetworkCommands, FileMayHaveAnyContent) {
  Start("bench");
  const std::string bytes = "01ff010105060708";
  for (size_t length = 0; length <= 8; ++length) {
    const ProgramResult result = Board({"network", "bytes", bytes.substr(0, 2 * length)});
    EXPECT_EQ(result.standard_output, length < 5 ? "down\n" : "ready\n") << length << " bytes";
    EXPECT_EQ(Read().standard_output, std::string("\x01\xff\x01\x01\x05\x06\x07\x08", length));
  }
  EXPECT_EQ(Board({"network", "bytes"}).standard_output, "down\n");
  EXPECT_EQ(Read().standard_output, "");
}

TEST_F(NetworkCommands, ReadyTakesFourOfTheFlags) {
  Start("bench");
  for (const std::string bytes : {"0001010101", "0101000101", "0101010001", "0101010100"}) {
    EXPECT_EQ(Board({"network", "bytes", bytes}).standard_output, "down\n") << bytes;
  }
  EXPECT_EQ(Board({"network", "bytes", "8000020304"}).standard_output, "ready\n");
}

TEST_F(NetworkCommands, StatusIsShownWithItsBytes) {
  Start("bench");
  const auto shown = [this](const std::string& line) {
    return Board({"show"}).standard_output.find("\nnetwork: /var/run/network_status, " + line +
                                                "\n") != std::string::npos;
  };
  EXPECT_TRUE(shown("ready, bytes 01 01 01 01 01"));
  Board({"network", "bytes", "0aFF"});
  EXPECT_TRUE(shown("down, bytes 0A FF"));
  Board({"network", "bytes", ""});
  EXPECT_TRUE(shown("down, empty"));
  Board({"network", "absent"});
  EXPECT_TRUE(shown("absent"));
  const json state = json::parse(Board({"show", "--json"}).standard_output);
  EXPECT_EQ(state.at("network"), json({{"file", "/var/run/network_status"}, {"state", "absent"}}));
}

TEST_F(NetworkCommands, ReadersSeeTheFileOfTheirOpenToItsEnd) {
  Start("bench");
  std::ifstream reader(StatusFile(), std::ios::binary);
  ASSERT_EQ(reader.get(), 1);
  Board({"network", "bytes", "000000"});
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), std::string(4, '\1'))
      << "the file has been replaced, not written over";
}

TEST_F(NetworkCommands, FileIsNeverOpenedForWritingUnderItsName) {
  Start("bench");
  const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  ASSERT_GE(inotify_add_watch(watch, StatusFile().c_str(), IN_MODIFY | IN_CLOSE_WRITE), 0);
  Board({"network", "down"});
  char event[256];
  // The watch is on the file that was there; that it went is told, that it changed is not.
  while (read(watch, event, sizeof event) > 0) {
    EXPECT_EQ(reinterpret_cast<const inotify_event*>(event)->mask & (IN_MODIFY | IN_CLOSE_WRITE),
              0U);
  }
  close(watch);
}

TEST_F(NetworkCommands, ServiceOnTheBoardMayWriteTheFile) {
  Start("bench");
  const std::string script = "printf '\\0\\1' >/var/run/network_status";
  EXPECT_EQ(Board({"exec", "bench", "sh", "-c", script}).status, 0);
  EXPECT_EQ(Board({"network"}).standard_output, "down\n");
  EXPECT_EQ(Read().standard_output, std::string("\0\1", 2));
}

TEST_F(NetworkCommands, OpeningCanFail) {
  Start("bench", {"--fault", "open:/var/run/network_status=EACCES@2"});
  EXPECT_EQ(Read().status, 0);
  EXPECT_EQ(Read().standard_error, "cat: /var/run/network_status: Permission denied\n");
  EXPECT_EQ(Read().status, 0);
}

TEST_F(NetworkCommands, ReadingCanFailAlsoOfAFileThatHasBeenReplaced) {
  Start("bench", {"--fault", "read:/var/run/network_status=EIO"});
  EXPECT_EQ(Read().standard_error, "cat: /var/run/network_status: Input/output error\n");
  const std::string script =
      "exec 5</var/run/network_status; " KESTREL_BOARD_PROGRAM " network down >&2; cat <&5";
  EXPECT_EQ(Board({"exec", "bench", "sh", "-c", script}).standard_error,
            "down\ncat: -: Input/output error\n");
}

TEST_F(NetworkCommands, FileGoesWithItsBoard) {
  Start("bench");
  Board({"network", "down"});
  EXPECT_TRUE(std::filesystem::exists(StatusFile()));
  Board({"stop", "bench"});
  started_.clear();
  EXPECT_FALSE(std::filesystem::exists(StatusFile()));
  EXPECT_TRUE(folder_.IsEmpty());
}

TEST_F(NetworkCommands, StatusThatCannotBeWrittenIsReportedAndTheOldOneStays) {
  const std::string start = "ulimit -f 1; trap '' XFSZ; exec " KESTREL_BOARD_PROGRAM " start bench";
  ASSERT_EQ(RunProgram({"bash", "-c", start}, environment_).status, 0);
  started_.emplace_back("bench");
  const ProgramResult result = Board({"network", "bytes", std::string(3000, '0')});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error, "kestrel-board: " + StatusFile() + ": File too large\n");
  EXPECT_EQ(Board({"network"}).standard_output, "ready\n");
}

TEST_F(NetworkCommands, StatusCanBeConfigured) {
  EXPECT_EQ(StateWith("[network]\nstatus = \"ready\"\n"), "ready:01 01 01 01 01");
  EXPECT_EQ(StateWith("[network]\nstatus = \"down\"\n"), "down:00 00 00 00 00");
  EXPECT_EQ(StateWith("[network]\nstatus = \"absent\"\n"), "absent:none");
  EXPECT_EQ(StateWith("[network]\nstatus = \"bytes 01ff01010A22\"\n"), "ready:01 FF 01 01 0A 22");
  EXPECT_EQ(StateWith("[network]\nstatus = \"bytes 01 FF 01 01 0A 22\"\n"),
            "ready:01 FF 01 01 0A 22");
  EXPECT_EQ(StateWith("[network]\nstatus = \"bytes\"\n"), "down:");
}

TEST_F(NetworkCommands, InvalidStatusIsRefused) {
  Start("bench");
  const std::string expected =
      "must be ready, down, absent, or bytes and up to 4096 of them in hexadecimal, such as bytes "
      "0100010101";
  for (const std::string status :
       {"", "up", "bytes 0", "bytes 0g", "bytes00", "bytes 0 g", "ready x", "READY"}) {
    ExpectRefused("b.toml", "[network]\nstatus = \"" + status + "\"\n",
                  ":2: 'network.status': the status " + expected);
    std::string reason = "the status '";
    reason.append(status).append("' ").append(expected);
    ExpectUsageError({"network", status}, reason);
  }
  ExpectUsageError({"network", "bytes", std::string(8194, '0')},
                   "the status 'bytes " + std::string(8194, '0') + "' " + expected);
  EXPECT_EQ(Board({"network", "bytes", std::string(8192, '0')}).standard_output, "down\n");
  ExpectRefused("c.toml", "[network]\n\nready = true\n",
                ":3: unknown key 'network.ready' (known: status)");
}

}  // namespace
}  // namespace kestrel::test
