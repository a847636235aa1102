// SPDX-License-Identifier: Apache-2.0
// kestrel-board uart, and what configurations and `show` say of serial ports.
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <nlohmann/json.hpp>

#include "board_command.h"
#include "raw_port.h"
#include "stopped_process.h"

namespace kestrel::test {
namespace {

using nlohmann::json;

class UartCommand : public BoardCommand {
 protected:
  /// The state of a port of the only board that runs.
  json Port(size_t index) const {
    return json::parse(Board({"show", "--json"}).standard_output).at("uart").at("ports").at(index);
  }
  bool IsAttached(size_t index) const {
    return Port(index).at("other_end") == "kestrel-board uart";
  }

  /// A program on board "bench" that has port 0 open; see port_probe.c.
  std::vector<std::string> WithRawPort(const std::string& text) const {
    return Arguments({"exec", "bench", KESTREL_BOARD_PORT_PROBE, "/dev/ttyS0", text});
  }
  /// `kestrel-board uart ARGUMENTS` as a shell runs it.
  std::string Uart(const std::string& arguments) const {
    return std::string(KESTREL_BOARD_PROGRAM) + " uart " + arguments;
  }
  ProgramResult Shell(const std::string& script) const {
    return RunProgram({"sh", "-c", script}, environment_);
  }
};

TEST_F(UartCommand, SendsItsInputToAPortAndPrintsTheAnswer) {
  Start("bench");
  BackgroundProgram program(WithRawPort("answer"), environment_);
  ASSERT_TRUE(program.WaitForOutput("ready"));
  // What it sent before has gone where nobody is.
  ASSERT_TRUE(Eventually([this] { return Port(0).at("out") == 6; }));
  const ProgramResult result = Shell("printf question | " + Uart("0"));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.standard_output, "answer");
  EXPECT_EQ(result.standard_error, "");
  EXPECT_TRUE(program.WaitForOutput("question"));
}

TEST_F(UartCommand, WaitsUntilAProgramHasThePortOpen) {
  Start("bench");
  BackgroundProgram command({"sh", "-c", "printf question | " + Uart("0 --wait")}, environment_);
  EXPECT_FALSE(command.WaitForOutput("answer", std::chrono::milliseconds(100)));
  EXPECT_FALSE(IsAttached(0));
  BackgroundProgram program(WithRawPort("answer"), environment_);
  // It looks many times a second.
  EXPECT_NE(command.Wait(std::chrono::seconds(15)).standard_output.find("answer"),
            std::string::npos);
}

TEST_F(UartCommand, PortThatAProgramHasClosedDoesNotKeepTheBoardBusy) {
  Start("bench");
  {
    BackgroundProgram program(WithRawPort("answer"), environment_);
    ASSERT_TRUE(program.WaitForOutput("ready"));
  }
  ASSERT_TRUE(Eventually([this] { return !Port(0).at("open"); }));
  EXPECT_TRUE(IsIdle(ProcessOf("bench")));
}

TEST_F(UartCommand, WithoutInputItListensUntilNobodyReads) {
  Start("bench");
  BackgroundProgram command({"sh", "-c", Uart("0") + " </dev/null | head -c 5"}, environment_);
  ASSERT_TRUE(Eventually([this] { return IsAttached(0); }));
  BackgroundProgram program(WithRawPort("12345"), environment_);
  const ProgramResult result = command.Wait();
  EXPECT_EQ(result.standard_output, "12345");
  EXPECT_EQ(result.standard_error, "");
  EXPECT_TRUE(Eventually([this] { return !IsAttached(0); }));
}

TEST_F(UartCommand, OutputThatCannotBeWrittenEndsIt) {
  Start("bench");
  BackgroundProgram command({"sh", "-c", Uart("0") + " </dev/null >/dev/full"}, environment_);
  ASSERT_TRUE(Eventually([this] { return IsAttached(0); }));
  const BackgroundProgram program(WithRawPort("answer"), environment_);
  const ProgramResult result = command.Wait();
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error, "kestrel-board: standard output: No space left on device\n");
}

TEST_F(UartCommand, SendsItsInputAlsoWhenNobodyReadsTheOutput) {
  Start("bench");
  BackgroundProgram program(WithRawPort(""), environment_);
  ASSERT_TRUE(program.WaitForOutput("ready"));
  const ProgramResult result =
      Shell("(sleep 0.2; printf question) | (" + Uart("0") + "; echo status $? >&2) | true");
  EXPECT_EQ(result.standard_error, "status 0\n");
  EXPECT_TRUE(program.WaitForOutput("question"));
}

TEST_F(UartCommand, CarriesEveryByteBothWays) {
  Start("bench");
  const TemporaryDirectory files;
  const std::string pattern = Pattern(size_t{1024} * 1024);
  const std::string sent = files.Write("sent", pattern);
  BackgroundProgram echo(WithRawPort("-"), environment_);
  ASSERT_TRUE(echo.WaitForOutput("ready"));
  const ProgramResult result = Shell(Uart("0") + " <" + sent);
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.standard_output == pattern) << result.standard_output.size();
  EXPECT_EQ(Port(0).at("in"), pattern.size());
}

TEST_F(UartCommand, SecondAttachmentIsRefusedUntilTheFirstHasDied) {
  Start("bench");
  const BackgroundProgram first(Arguments({"uart", "1"}), environment_);
  ASSERT_TRUE(Eventually([this] { return IsAttached(1); }));
  const ProgramResult second = Board({"uart", "1"});
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.standard_error,
            "kestrel-board: /dev/ttyS1: the other end of its wire is taken: kestrel-board uart\n");
  const BackgroundProgram other(Arguments({"uart", "2"}), environment_);
  EXPECT_TRUE(Eventually([this] { return IsAttached(2); }));
  first.Signal(SIGKILL);
  EXPECT_TRUE(Eventually([this] { return !IsAttached(1); }));
  const BackgroundProgram third(Arguments({"uart", "1"}), environment_);
  EXPECT_TRUE(Eventually([this] { return IsAttached(1); }));
}

TEST_F(UartCommand, SignalEndsItAsTheSignalDoes) {
  Start("bench");
  BackgroundProgram command(Arguments({"uart", "0"}), environment_);
  ASSERT_TRUE(Eventually([this] { return IsAttached(0); }));
  command.Signal(SIGTERM);
  EXPECT_EQ(command.Wait().status, 128 + SIGTERM);
}

TEST_F(UartCommand, EndsWithAMessageWhenTheBoardStops) {
  Start("bench");
  BackgroundProgram command(Arguments({"uart", "0"}), environment_);
  ASSERT_TRUE(Eventually([this] { return IsAttached(0); }));
  Board({"stop", "bench"});
  started_.clear();
  const ProgramResult result = command.Wait();
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error, "kestrel-board: the board has stopped\n");
}

/// A pseudo-terminal in which a person could sit.
class UserTerminal {
 public:
  UserTerminal() {
    grantpt(person_);
    unlockpt(person_);
  }
  ~UserTerminal() { close(person_); }
  UserTerminal(const UserTerminal&) = delete;
  UserTerminal& operator=(const UserTerminal&) = delete;

  std::string path() const { return ptsname(person_); }
  bool IsRaw() const {
    termios settings{};
    tcgetattr(person_, &settings);
    return (settings.c_lflag & (ICANON | ECHO | ISIG)) == 0;
  }
  void Type(const std::string& keys) const {
    ASSERT_EQ(write(person_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  /// Whether `text` appears.
  bool Shows(const std::string& text) {
    return Eventually([&] {
      std::array<char, 4096> buffer{};
      const ssize_t count = read(person_, buffer.data(), buffer.size());
      shown_.append(buffer.data(), count > 0 ? static_cast<size_t>(count) : 0);
      return shown_.find(text) != std::string::npos;
    });
  }

 private:
  int person_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  std::string shown_;
};

class UartOnTerminal : public UartCommand {
 protected:
  /// The command with the terminal as its streams; the shell keeps the terminal open.
  std::vector<std::string> Attached() const {
    return {"sh", "-c",
            "exec 3<>" + terminal_.path() + "; " + Uart("0") + " <&3 >&3 2>&3; echo status $?"};
  }

  UserTerminal terminal_;
};

TEST_F(UartOnTerminal, HandsOnEveryKeyButTheOneThatLeaves) {
  Start("bench");
  BackgroundProgram program(WithRawPort("-"), environment_);
  ASSERT_TRUE(program.WaitForOutput("ready"));
  BackgroundProgram command(Attached(), environment_);
  EXPECT_TRUE(terminal_.Shows("attached to /dev/ttyS0; Ctrl-] leaves\r\n"));
  ASSERT_TRUE(Eventually([this] { return terminal_.IsRaw(); }));
  terminal_.Type("a\x03\x1a\x04\r\n\x11\x13z");
  EXPECT_TRUE(terminal_.Shows("a\x03\x1a\x04\r\n\x11\x13z"));
  terminal_.Type("last\x1d");
  EXPECT_EQ(command.Wait().standard_output, "status 0\n");
  EXPECT_TRUE(Eventually([this] { return Port(0).at("in") == 13; })) << Port(0);
  EXPECT_FALSE(terminal_.IsRaw());
}

TEST_F(UartOnTerminal, KeysOfACommandThatHasLeftReachABusyBoard) {
  Start("bench");
  BackgroundProgram program(WithRawPort("answer"), environment_);
  ASSERT_TRUE(program.WaitForOutput("ready"));
  BackgroundProgram command(Attached(), environment_);
  ASSERT_TRUE(Eventually([this] { return IsAttached(0) && terminal_.IsRaw(); }));
  const pid_t server = ProcessOf("bench");
  ASSERT_GT(server, 1);
  {
    const StoppedProcess board(server);
    terminal_.Type("last keys\x1d");
    EXPECT_EQ(command.Wait().standard_output, "status 0\n");
  }
  EXPECT_TRUE(program.WaitForOutput("last keys"));
}

TEST_F(UartOnTerminal, SignalLeavesTheTerminalAsItWas) {
  Start("bench");
  for (const int number : {SIGTERM, SIGHUP, SIGINT, SIGQUIT, SIGUSR1, SIGALRM}) {
    BackgroundProgram command(
        {"sh", "-c",
         "ulimit -c 0; exec 3<>" + terminal_.path() + "; exec " + Uart("0") + " <&3 >&3 2>&3"},
        environment_);
    ASSERT_TRUE(Eventually([this] { return terminal_.IsRaw(); }));
    command.Signal(number);
    EXPECT_EQ(command.Wait().status, 128 + number);
    EXPECT_FALSE(terminal_.IsRaw());
  }
}

TEST_F(UartOnTerminal, StoppedBoardLeavesTheTerminalAsItWas) {
  Start("bench");
  BackgroundProgram command(Attached(), environment_);
  ASSERT_TRUE(Eventually([this] { return terminal_.IsRaw(); }));
  Board({"stop", "bench"});
  started_.clear();
  EXPECT_EQ(command.Wait().standard_output, "status 1\n");
  EXPECT_FALSE(terminal_.IsRaw());
}

TEST_F(UartCommand, BoardsDoNotShareTheirPorts) {
  Start("first");
  Start("second");
  const std::string script = "exec 5<>/dev/ttyS0; flock -n 5 && echo locked && exec sleep 60";
  BackgroundProgram one(Arguments({"exec", "first", "sh", "-c", script}), environment_);
  EXPECT_TRUE(one.WaitForOutput("locked"));
  BackgroundProgram two(Arguments({"exec", "second", "sh", "-c", script}), environment_);
  EXPECT_TRUE(two.WaitForOutput("locked"));
  EXPECT_EQ(Board({"exec", "first", "sh", "-c", script}).status, 1);
}

TEST_F(UartCommand, FaultsHitPortsThatWereOpenBeforeAnExec) {
  const std::string script = "exec 5<>/dev/ttyS0; flock -n 5 || echo failed";
  EXPECT_EQ(Board({"run", "--", "sh", "-c", script}).standard_output, "");
  EXPECT_EQ(
      Board({"run", "--fault", "flock:/dev/ttyS0=EIO", "--", "sh", "-c", script}).standard_output,
      "failed\n");
  EXPECT_EQ(
      Board({"run", "--fault", "flock:/dev/ttyS1=EIO", "--", "sh", "-c", script}).standard_output,
      "");
}

TEST_F(UartCommand, ProgramFindsItsPortGoneWhenTheBoardStops) {
  Start("bench");
  BackgroundProgram program(WithRawPort("-"), environment_);
  ASSERT_TRUE(program.WaitForOutput("ready"));
  Board({"stop", "bench"});
  started_.clear();
  EXPECT_EQ(program.Wait().status, 0);
}

class UartConfigFile : public UartCommand {
 protected:
  void ExpectRefused(const std::string& content, const std::string& reason) {
    const std::string path = files_.Write("b.toml", content);
    ExpectUsageError({"run", "--config", path, "true"}, path + reason);
  }
  const TemporaryDirectory files_;
};

TEST_F(UartConfigFile, DescribesWiresAndForgetfulPorts) {
  Start("bench", {"--config", files_.Write("b.toml",
                                           "[uart]\nports = [7, 255, 9]\n"
                                           "[[uart.cable]]\nbetween = [7, 9]\n"
                                           "[[uart.port]]\nnumber = 255\nloopback = true\n"
                                           "forget = [\"speed\", \"raw\"]\n")});
  const std::string shown = Board({"show"}).standard_output;
  EXPECT_NE(
      shown.find("uart: 3 ports\n"
                 "  /dev/ttyS7   closed  9600 8N1, flow control xon, cooked; in 0, out 0; other "
                 "end: cable to /dev/ttyS9\n"
                 "  /dev/ttyS9   closed  9600 8N1, flow control xon, cooked; in 0, out 0; other "
                 "end: cable to /dev/ttyS7\n"
                 "  /dev/ttyS255 closed  9600 8N1, flow control xon, cooked; in 0, out 0; "
                 "other end: loopback; forgets raw, speed\n"
                 "  0 idle, closed\n"),
      std::string::npos)
      << shown;
  const ProgramResult result = Board({"uart", "7"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error,
            "kestrel-board: /dev/ttyS7: the other end of its wire is taken: cable to /dev/ttyS9\n");
  ExpectUsageError({"uart", "8"}, "port 8: the board has ports 7, 9, 255");
}

TEST_F(UartConfigFile, BoardMayHaveNoPorts) {
  Start("bench", {"--config", files_.Write("b.toml", "[uart]\nports = []\n")});
  EXPECT_NE(Board({"show"}).standard_output.find("uart: 0 ports\n"), std::string::npos);
  EXPECT_EQ(Board({"exec", "bench", "sh", "-c", ": </dev/ttyS0"}).status, 2);
  ExpectUsageError({"uart", "0"}, "port 0: the board has no ports");
}

TEST_F(UartConfigFile, InvalidOnesAreRefusedWithFileLineAndReason) {
  ExpectRefused("[uart]\nports = [0, 256]\n",
                ":2: 'uart.ports' must be an array of whole numbers from 0 to 255");
  ExpectRefused("[uart]\nports = [3,\n3]\n", ":3: 'uart.ports': port 3 stands here twice");
  ExpectRefused("[uart]\nspeed = 3\n", ":2: unknown key 'uart.speed' (known: cable, port, ports)");
  ExpectRefused("[[uart.cable]]\nbetween = [0]\n",
                ":2: 'uart.cable.between': a cable joins two ports, such as [0, 1]");
  ExpectRefused("[[uart.cable]]\nbetween = [1, 1]\n",
                ":2: 'uart.cable.between': a cable joins two ports, such as [0, 1]");
  ExpectRefused("[[uart.cable]]\nbetween = [0, 4]\n",
                ":2: 'uart.cable.between': the board has no port 4");
  ExpectRefused(
      "[[uart.cable]]\nbetween = [0, 1]\n[[uart.cable]]\nbetween = [2, 1]\n",
      ":4: 'uart.cable.between': port 1 has something at the other end of its wire already");
  ExpectRefused(
      "[[uart.cable]]\nbetween = [0, 1]\n[[uart.port]]\nnumber = 1\nloopback = true\n",
      ":5: 'uart.port.loopback': port 1 has something at the other end of its wire already");
  ExpectRefused("[[uart.port]]\nloopback = true\n", ":1: 'uart.port.number' is missing");
  ExpectRefused("[[uart.port]]\nnumber = 5\n", ":2: 'uart.port.number': the board has no port 5");
  ExpectRefused("[[uart.port]]\nnumber = 3\n[[uart.port]]\nnumber = 3\n",
                ":4: 'uart.port.number': port 3 is described twice");
  ExpectRefused("[[uart.port]]\nnumber = 3\nforget = [\"sped\"]\n",
                ":3: 'uart.port.forget': no setting is called 'sped' (known: speed, data-bits, "
                "stop-bits, parity, rts-cts, xon-xoff, min-time, raw)");
}

TEST_F(UartCommand, BadArgumentsAreRefusedInOneLine) {
  Start("bench");
  ExpectUsageError({"uart", "x"},
                   "NUMBER: must be the number of a serial port, such as 0, not 'x' (see "
                   "kestrel-board --help)");
  ExpectUsageError({"uart", "4"}, "port 4: the board has ports 0, 1, 2, 3");
  ExpectUsageError({"uart", "0", "--forget", "sped"},
                   "--forget: no setting is called 'sped' (known: speed, data-bits, stop-bits, "
                   "parity, rts-cts, xon-xoff, min-time, raw) (see kestrel-board --help)");
}

TEST_F(UartCommand, ShowAsJsonTellsAllOfAPort) {
  Start("bench");
  BackgroundProgram program(WithRawPort("-"), environment_);
  ASSERT_TRUE(program.WaitForOutput("ready"));
  EXPECT_EQ(
      Board({"uart", "0", "--forget", "speed"}).standard_output,
      "  /dev/ttyS0   open    9600 8N1, flow control none, raw; in 0, out 0; other end: nothing; "
      "forgets speed\n");
  json port = Port(0);
  EXPECT_EQ(port.at("terminal").get<std::string>().rfind("/dev/pts/", 0), 0U);
  port.erase("terminal");
  EXPECT_EQ(port, json({{"port", 0},
                        {"device", "/dev/ttyS0"},
                        {"open", true},
                        {"fresh", false},
                        {"in", 0},
                        {"out", 0},
                        {"lost", 0},
                        {"speed", 9600},
                        {"data_bits", 8},
                        {"parity", "none"},
                        {"stop_bits", 1},
                        {"flow_control", json::array()},
                        {"raw", true},
                        {"other_end", nullptr},
                        {"forgets", {"speed"}}}));
}

}  // namespace
}  // namespace kestrel::test
