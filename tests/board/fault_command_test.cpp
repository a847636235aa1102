// SPDX-License-Identifier: Apache-2.0
// Faults on the command line.
#include <algorithm>
#include <filesystem>

#include "board_command.h"

namespace kestrel::test {
namespace {

class FaultOption : public BoardCommand {
 protected:
  const TemporaryDirectory files_;
};

TEST_F(FaultOption, LetsTheNamedCallFail) {
  const ProgramResult result = Board({"run", "--fault", "open:/dev/gpiochip0=EACCES", kProbe});
  EXPECT_EQ(result.standard_output, "errno 13\n");
  EXPECT_EQ(result.standard_error,
            "[Kestrel:GPIO] Problem opening GPIO chip: Permission denied (13)\n");
}

TEST_F(FaultOption, SeveralMayBeGiven) {
  const ProgramResult result = Board(
      {"run", "--fault", "close=EIO", "--fault", "ioctl:GPIO_GET_LINEHANDLE_IOCTL=EPERM", kProbe});
  EXPECT_EQ(result.standard_output, "errno 1\n");
}

TEST_F(FaultOption, CanHitTheNthCallOnly) {
  const ProgramResult result =
      Board({"run", "--fault", "open=EIO@2", "sh", "-c", kProbe + ";" + kProbe + ";" + kProbe});
  EXPECT_EQ(result.standard_output, "level 1\nerrno 5\nlevel 1\n");
}

TEST_F(FaultOption, CanBeChangedWhileTheBoardRuns) {
  Start("bench", {"--fault", "open=EIO"});
  EXPECT_EQ(Board({"exec", "bench", kProbe}).standard_output, "errno 5\n");
  EXPECT_EQ(Board({"fault"}).standard_output, "fault: open=EIO, 1 such call so far\n");
  EXPECT_EQ(Board({"fault", "--clear", "open=EBUSY"}).standard_output,
            "fault: open=EBUSY, 0 such calls so far\n");
  EXPECT_EQ(Board({"exec", "bench", kProbe}).standard_output, "errno 16\n");
  ExpectUsageError({"fault", "--clear", "open=NONSENSE"},
                   "fault 'open=NONSENSE': no errno is called 'NONSENSE' (such as EIO or ENODEV)");
  EXPECT_EQ(Board({"fault"}).standard_output, "fault: open=EBUSY, 1 such call so far\n");
}

TEST_F(FaultOption, IsShown) {
  Start("bench", {"--fault", "open=EIO@2"});
  EXPECT_NE(Board({"show"}).standard_output.find("fault: open=EIO@2, 0 such calls so far\n"),
            std::string::npos);
}

TEST_F(FaultOption, NeedNotBeUtf8ToBeRefused) {
  Start("bench");
  EXPECT_EQ(Board({"fault", "open\xff=EIO"}).status, 2);
  EXPECT_EQ(Board({"line", "4"}).standard_output, "low\n");
}

TEST_F(FaultOption, HitsProgramsWithoutAStandardStream) {
  // The connection over which the board is asked gets the number of the stream.
  const std::vector<std::string> run = {
      "run", "--fault", "read:/var/run/network_status=EIO",
      "sh",  "-c",      "head -c 1 </var/run/network_status 2>&-"};
  const ProgramResult result = Board(run);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_output, "");
}

TEST_F(FaultOption, HitsFilesOfABoardWhosePathHasSpacesAndLinks) {
  const std::string folder = folder_.path() + "/of boards";
  const std::string link = folder_.path() + "/link";
  std::filesystem::create_directory(folder);
  std::filesystem::create_directory_symlink(folder, link);
  const std::string script =
      KESTREL_BOARD_PROGRAM " network ready >&2; exec head -c 1 /var/run/network_status";
  for (const std::string& place : {folder, link + "/deeper"}) {
    const ProgramResult result = RunProgram(
        Arguments({"run", "--config", files_.Write("b.toml", "network.status = \"absent\""),
                   "--fault", "read:/var/run/network_status=EIO", "sh", "-c", script}),
        {{"KESTREL_BOARD_DIR", place}});
    EXPECT_EQ(result.standard_error,
              "ready\nhead: error reading '/var/run/network_status': Input/output error\n");
  }
  std::filesystem::remove_all(folder);
  std::filesystem::remove(link);
}

TEST_F(FaultOption, ManyAreTakenAtOnce) {
  Start("bench");
  std::vector<std::string> arguments(10000, "ioctl:0x8044B401=EIO");
  arguments.insert(arguments.begin(), "fault");
  const ProgramResult result = Board(arguments);
  EXPECT_EQ(result.status, 0) << result.standard_error;
  EXPECT_EQ(std::count(result.standard_output.begin(), result.standard_output.end(), '\n'), 10000);
}

TEST_F(FaultOption, LongOnesAreRefusedInOneLine) {
  Start("bench");
  const std::string fault(100000, 'x');
  ExpectUsageError({"fault", fault}, "fault '" + fault +
                                         "': a fault is written CALL[:WHAT]=ERRNO[@N], such as "
                                         "open:/dev/gpiochip0=EACCES");
}

TEST_F(FaultOption, BadFaultsAreRefusedInOneLine) {
  ExpectUsageError({"run", "--fault", "opne=EIO", "true"},
                   "fault 'opne=EIO': no call is named 'opne' (known: open, ioctl, flock, "
                   "tcgetattr, tcsetattr, fcntl, read, write, writev, connect, setsockopt, "
                   "close)");
  ExpectUsageError({"run", "--fault", "open=EFOO", "true"},
                   "fault 'open=EFOO': no errno is called 'EFOO' (such as EIO or ENODEV)");
  ExpectUsageError({"run", "--fault", "open:/dev/null=EIO", "true"},
                   "fault 'open:/dev/null=EIO': the board has nothing called '/dev/null' to open "
                   "(known: /dev/gpiochip0, /dev/ttyS0, /dev/ttyS1, /dev/ttyS2, /dev/ttyS3, "
                   "/var/run/network_status, /dev/warden, /dev/lodestone, "
                   "/var/volatile/tmp/wlan0_request_socket)");
  ExpectUsageError({"run", "--fault", "read:/dev/gpiochip0=EIO", "true"},
                   "fault 'read:/dev/gpiochip0=EIO': the board has nothing called "
                   "'/dev/gpiochip0' to read (known: /dev/ttyS0, /dev/ttyS1, /dev/ttyS2, "
                   "/dev/ttyS3, /var/run/network_status, "
                   "/var/volatile/tmp/wlan0_request_socket)");
  ExpectUsageError({"run", "--fault", "open", "true"},
                   "fault 'open': a fault is written CALL[:WHAT]=ERRNO[@N], such as "
                   "open:/dev/gpiochip0=EACCES");
  ExpectUsageError({"run", "--fault", "open=EIO@0", "true"},
                   "fault 'open=EIO@0': after @ stands which call fails, counted from 1");
}

}  // namespace
}  // namespace kestrel::test
