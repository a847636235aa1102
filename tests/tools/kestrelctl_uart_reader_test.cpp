// SPDX-License-Identifier: Apache-2.0
// kestrelctl uart when the reader of its standard output stops or goes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <chrono>

#include "uart_board.h"

namespace kestrel::test {
namespace {

/// The least that a pipe takes once it was full.
constexpr size_t kPage = 4096;

/// A pipe that is full, whose reader takes no more than it is told to.
class StoppedReader {
 public:
  StoppedReader() {
    EXPECT_EQ(pipe(ends_.data()), 0);
    fcntl(ends_[0], F_SETFD, FD_CLOEXEC);
    fcntl(ends_[1], F_SETFL, O_NONBLOCK);
    const std::string page(kPage, '.');
    while (write(ends_[1], page.data(), page.size()) > 0) {
    }
    fcntl(ends_[1], F_SETFL, 0);
    full_ = Unread();
  }
  ~StoppedReader() {
    close(ends_[0]);
    close(ends_[1]);
  }
  StoppedReader(const StoppedReader&) = delete;
  StoppedReader& operator=(const StoppedReader&) = delete;

  /// The descriptor that programs write to.
  int input() const { return ends_[1]; }
  void TakeAPage() const {
    std::array<char, kPage> page;
    EXPECT_EQ(read(ends_[0], page.data(), page.size()), static_cast<ssize_t>(page.size()));
  }
  /// Waits until something was written in place of the page that was taken.
  bool WaitForMore() const {
    return ComesTrue([this] { return Unread() + static_cast<int>(kPage) > full_; });
  }

 private:
  int Unread() const {
    int count = 0;
    ioctl(ends_[0], FIONREAD, &count);
    return count;
  }

  std::array<int, 2> ends_{};
  int full_ = 0;
};

class KestrelctlUartReader : public testing::Test {
 protected:
  /// The command that receives from port 0 for a reader.
  Words ReceiveFor(const StoppedReader& reader, const std::string& options = "") const {
    return board_.Exec(
        {"bash", "-c",
         "exec \"$0\" uart 0 --receive " + options + " >&" + std::to_string(reader.input()),
         KESTRELCTL});
  }

  const UartBoard board_;
};

TEST_F(KestrelctlUartReader, EndsAReceiverThatNothingComesTo) {
  EXPECT_THAT(
      RunProgram(board_.Exec({"bash", "-c",
                              R"(timeout 20 "$0" uart 0 --receive | true; exit ${PIPESTATUS[0]})",
                              KESTRELCTL})),
      Ends(1, "", "kestrelctl: standard output: EPIPE: Broken pipe\n"));
}

TEST_F(KestrelctlUartReader, MayStopAfterTheLastByteHasCome) {
  const StoppedReader reader;
  BackgroundProgram receiver(ReceiveFor(reader, "--bytes 1"));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  board_.Count("read:/dev/ttyS0");
  board_.Send(1, "x");
  board_.WaitForCalls(1);
  receiver.Signal(SIGTERM);
  EXPECT_THAT(receiver.Wait(std::chrono::seconds(20)), Ends(0, "", ""));
}

TEST_F(KestrelctlUartReader, MayTakeALittleAndStopAgain) {
  const StoppedReader reader;
  BackgroundProgram receiver(ReceiveFor(reader));
  ASSERT_TRUE(board_.WaitUntilOpen(0));
  board_.Send(1, std::string(3 * kPage, 'x'));
  ASSERT_TRUE(board_.WaitForBytesTo(0, 3 * kPage));
  reader.TakeAPage();
  ASSERT_TRUE(reader.WaitForMore());
  receiver.Signal(SIGTERM);
  EXPECT_THAT(receiver.Wait(std::chrono::seconds(20)), Ends(0, "", ""));
}

}  // namespace
}  // namespace kestrel::test
