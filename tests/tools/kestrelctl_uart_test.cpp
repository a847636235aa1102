// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <chrono>
#include <thread>

#include "uart_board.h"

namespace kestrel::test {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

/// Text with every byte, longer than any buffer on its way.
std::string LongText() {
  std::string text;
  for (size_t i = 0; i < 200000; ++i) {
    text += static_cast<char>((i + i / 256) % 256);
  }
  return text;
}

class KestrelctlUart : public testing::Test {
 protected:
  ProgramResult Run(const Words& arguments) const { return RunProgram(board_.Uart(arguments)); }
  /// Runs a shell line on the board, in which "$0" is kestrelctl.
  ProgramResult RunShellLine(const std::string& line) const {
    return RunProgram(board_.Exec({"bash", "-c", line, KESTRELCTL}));
  }

  const UartBoard board_;
  const TemporaryDirectory files_;
};

TEST_F(KestrelctlUart, ReceivesUntilAsManyBytesHaveCome) {
  BackgroundProgram receiver(board_.Uart({"0", "--receive", "--bytes", "5"}));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  board_.Send(1, "hello world");
  EXPECT_THAT(receiver.Wait(), Ends(0, "hello", ""));
}

TEST_F(KestrelctlUart, ReceivesWhatComesInSeveralPieces) {
  BackgroundProgram receiver(board_.Uart({"0", "--receive", "--bytes", "6"}));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  board_.Send(1, "one");
  ASSERT_TRUE(receiver.WaitForOutput("one")) << "what has come is shown at once";
  board_.Send(1, "two and more");
  EXPECT_THAT(receiver.Wait(), Ends(0, "onetwo", ""));
}

TEST_F(KestrelctlUart, SendsAFileAndReceivesTheAnswerAtTheSameTime) {
  const std::string text = LongText();
  const ProgramResult result = Run({"2", "--send", files_.Write("f", text), "--receive", "--bytes",
                                    std::to_string(text.size())});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.standard_error, "");
  EXPECT_TRUE(result.standard_output == text);
}

TEST_F(KestrelctlUart, SendsStandardInput) {
  EXPECT_THAT(RunShellLine("printf 'a\\0b' | \"$0\" uart 2 --send - --receive --bytes 3"),
              Ends(0, std::string("a\0b", 3), ""));
  EXPECT_THAT(RunShellLine("\"$0\" uart 2 --send - </dev/null"), Ends(0, "", ""));
}

TEST_F(KestrelctlUart, SendsSlowInputAsItComes) {
  BackgroundProgram receiver(board_.Uart({"0", "--receive", "--bytes", "6"}));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  RunProgram({"mkfifo", files_.path() + "/go"});
  BackgroundProgram sender(board_.Exec(
      {"bash", "-c", R"((printf one; read -r <"$1"; printf two) | "$0" uart 1 --send -)",
       KESTRELCTL, files_.path() + "/go"}));
  ASSERT_TRUE(receiver.WaitForOutput("one"));
  RunProgram({"sh", "-c", "echo >\"$0\"", files_.path() + "/go"});
  EXPECT_EQ(receiver.Wait().standard_output, "onetwo");
  EXPECT_THAT(sender.Wait(), Ends(0, "", ""));
}

TEST_F(KestrelctlUart, FailsWhenTheTimeIsUpBeforeTheBytes) {
  const auto start = Clock::now();
  EXPECT_THAT(RunShellLine("printf abc | \"$0\" uart 2 --send - --receive --bytes 4 --timeout 0.3"),
              Ends(1, "abc", "kestrelctl: UART 2: the time is up: received 3 of 4 bytes\n"));
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(KestrelctlUart, ReceivesForAWhile) {
  const auto start = Clock::now();
  EXPECT_THAT(RunShellLine("printf abc | \"$0\" uart 2 --send - --receive --timeout 0.3"),
              Ends(0, "abc", ""));
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(KestrelctlUart, WaitsWithoutUsingTheProcessor) {
  rusage before{};
  rusage after{};
  getrusage(RUSAGE_CHILDREN, &before);
  EXPECT_THAT(Run({"0", "--receive", "--timeout", "2"}), Ends(0, "", ""));
  getrusage(RUSAGE_CHILDREN, &after);
  const auto used = after.ru_utime.tv_sec - before.ru_utime.tv_sec + after.ru_stime.tv_sec -
                    before.ru_stime.tv_sec;
  EXPECT_LT(used, 1);
}

class EndOfReceiving : public KestrelctlUart, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Signals, EndOfReceiving,
                         testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT));

TEST_P(EndOfReceiving, IsASignal) {
  BackgroundProgram receiver(board_.Uart({"0", "--receive"}));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  board_.Send(1, "hello");
  ASSERT_TRUE(receiver.WaitForOutput("hello"));
  receiver.Signal(GetParam());
  EXPECT_THAT(receiver.Wait(), Ends(0, "hello", ""));
}

TEST_P(EndOfReceiving, IsAFailureBeforeAllBytesHaveCome) {
  BackgroundProgram receiver(board_.Uart({"0", "--receive", "--bytes", "9"}));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  board_.Send(1, "hello");
  ASSERT_TRUE(receiver.WaitForOutput("hello"));
  receiver.Signal(GetParam());
  EXPECT_THAT(receiver.Wait(),
              Ends(1, "hello", "kestrelctl: UART 0: interrupted: received 5 of 9 bytes\n"));
}

TEST_F(KestrelctlUart, ShowsHexadecimal) {
  std::string text;
  for (int byte = 0x1B; byte < 0x2D; ++byte) {
    text += static_cast<char>(byte);
  }
  text += "\x7e\x7f\x80\xff";
  EXPECT_THAT(Run({"2", "--send", files_.Write("f", text), "--receive", "--bytes", "22", "--hex"}),
              Ends(0,
                   "00000000  1b 1c 1d 1e 1f 20 21 22 23 24 25 26 27 28 29 2a  "
                   "|..... !\"#$%&'()*|\n"
                   "00000010  2b 2c 7e 7f 80 ff                                |+,~...|\n",
                   ""));
}

TEST_F(KestrelctlUart, FillsLinesOfHexadecimalThatNobodyWatches) {
  BackgroundProgram receiver(board_.Uart({"0", "--receive", "--bytes", "6", "--hex"}));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  board_.Send(1, "one");
  board_.Send(1, "two");
  EXPECT_THAT(receiver.Wait(),
              Ends(0, "00000000  6f 6e 65 74 77 6f                                |onetwo|\n", ""));
}

TEST_F(KestrelctlUart, OpensThePortAsAsked) {
  const BackgroundProgram receiver(
      board_.Uart({"0", "--receive", "--baud", "9600", "--flow", "xon-xoff"}));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  json port;
  const auto deadline = Clock::now() + std::chrono::seconds(20);
  do {
    port = board_.Port(0);
  } while (port.at("speed") != 9600 && Clock::now() < deadline);
  EXPECT_EQ(port.at("speed"), 9600);
  EXPECT_EQ(port.at("flow_control").dump().find("xon") != std::string::npos, true) << port;
}

class KestrelctlUartBaud : public KestrelctlUart, public testing::WithParamInterface<uint32_t> {};

INSTANTIATE_TEST_SUITE_P(Every, KestrelctlUartBaud,
                         testing::Values(9600, 19200, 38400, 57600, 115200, 230400, 460800, 500000,
                                         576000, 921600, 1000000, 1152000, 1500000, 2000000),
                         testing::PrintToStringParamName());

TEST_P(KestrelctlUartBaud, IsWhatThePortIsSetTo) {
  EXPECT_THAT(Run({"0", "--baud", std::to_string(GetParam()), "--send", "/dev/null"}),
              Ends(0, "", ""));
  EXPECT_EQ(board_.Port(0).at("speed"), GetParam());
}

TEST_F(KestrelctlUart, SaysThatAnotherProgramHasThePort) {
  BackgroundProgram holder(board_.Uart({"2", "--receive", "--bytes", "1"}));
  ASSERT_TRUE(board_.WaitUntilOpen(2));
  const std::string answer =
      "kestrelctl: UART 2: EAGAIN: Resource temporarily unavailable (another program has the port "
      "open)\n";
  // The port is open a moment before it is locked.
  ProgramResult result;
  const auto deadline = Clock::now() + std::chrono::seconds(20);
  do {
    result = Run({"2", "--receive", "--timeout", "0"});
  } while (result.status == 0 && Clock::now() < deadline);
  EXPECT_THAT(result, Ends(1, "", answer));
  EXPECT_THAT(Run({"2", "--receive", "--verbose"}),
              Ends(1, "",
                   "[Kestrel:UART] Unable to open device exclusively: Resource temporarily "
                   "unavailable (11).\n" +
                       answer));
}

TEST_F(KestrelctlUart, SaysThatThereIsNoSuchPort) {
  EXPECT_THAT(Run({"3", "--receive"}),
              Ends(1, "",
                   "kestrelctl: UART 3: ENOENT: No such file or directory (the device has no such "
                   "port)\n"));
}

TEST_F(KestrelctlUart, SaysThatTheDriverDoesNotTakeTheSettings) {
  board_.Board({"uart", "0", "--forget", "speed"});
  EXPECT_THAT(Run({"0", "--receive"}),
              Ends(1, "", "kestrelctl: UART 0: the driver does not take these settings\n"));
}

TEST_F(KestrelctlUart, NamesTheFileThatCannotBeSent) {
  EXPECT_THAT(Run({"0", "--send", "/nowhere/f"}),
              Ends(1, "", "kestrelctl: /nowhere/f: ENOENT: No such file or directory\n"));
  EXPECT_EQ(board_.Port(0).at("fresh"), true) << "no port is opened for a file that is not there";
  EXPECT_THAT(Run({"0", "--send", "/"}), Ends(1, "", "kestrelctl: /: EISDIR: Is a directory\n"));
}

TEST_F(KestrelctlUart, FailsWhenNobodyReadsItsOutput) {
  const std::string file = files_.Write("f", LongText());
  EXPECT_THAT(RunShellLine("timeout 20 \"$0\" uart 2 --send " + file +
                           " --receive | head -c 1 >/dev/null; exit ${PIPESTATUS[0]}"),
              Ends(1, "", "kestrelctl: standard output: EPIPE: Broken pipe\n"));
  EXPECT_THAT(RunShellLine("\"$0\" uart 2 --send " + file + " --receive >/dev/full"),
              Ends(1, "", "kestrelctl: standard output: ENOSPC: No space left on device\n"));
}

TEST_F(KestrelctlUart, IsNotHeldUpByAReceiverThatHasStopped) {
  const BackgroundProgram other(board_.HoldOpen(1));
  ASSERT_TRUE(board_.WaitUntilOpen(1));
  std::string text;
  while (text.size() < 5000000) {
    text += LongText();
  }
  BackgroundProgram sender(board_.Uart({"0", "--send", files_.Write("f", text)}));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  // Until its signals are what it waits for, one would end it as it ends every program.
  const auto bytes_out = [this] { return board_.Port(0).at("out").get<uint64_t>(); };
  const auto deadline = Clock::now() + std::chrono::seconds(20);
  while (bytes_out() == 0 && Clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  sender.Signal(SIGTERM);
  const ProgramResult result = sender.Wait(std::chrono::seconds(20));
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.standard_error,
              testing::MatchesRegex("kestrelctl: UART 0: interrupted: sent [0-9]+ of [0-9]+ "
                                    "bytes\n"));
}

struct UartFault {
  std::string fault;
  std::string answer;
};

void PrintTo(const UartFault& fault, std::ostream* stream) { *stream << fault.fault; }

class KestrelctlUartFaults : public testing::TestWithParam<UartFault> {};

INSTANTIATE_TEST_SUITE_P(
    Every, KestrelctlUartFaults,
    testing::Values(
        UartFault{"open:/dev/ttyS0=EACCES",
                  "EACCES: Permission denied (this user may not open the port)"},
        UartFault{"open:/dev/ttyS0=ENXIO",
                  "ENXIO: No such device or address (there is no hardware behind the port)"},
        UartFault{
            "tcsetattr:/dev/ttyS0=EINVAL",
            "EIO: Input/output error (there is no hardware behind the port, or its driver fails; "
            "--verbose shows which step failed)"},
        UartFault{"tcgetattr:/dev/ttyS0=ENOTTY",
                  "ENOTTY: Inappropriate ioctl for device (the device is no serial port)"},
        UartFault{"open:/dev/ttyS0=EMFILE", "EMFILE: Too many open files"}));

TEST_P(KestrelctlUartFaults, AreAnsweredInOneLine) {
  EXPECT_THAT(Kestrelctl({"uart", "0", "--receive"}, {GetParam().fault}),
              Ends(1, "", "kestrelctl: UART 0: " + GetParam().answer + "\n"));
}

}  // namespace
}  // namespace kestrel::test
