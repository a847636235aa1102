// SPDX-License-Identifier: Apache-2.0
// kestrelctl uart when the port goes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>

#include "on_board.h"

namespace kestrel::test {
namespace {

/// A board that can be stopped, and an input that ends when the test closes it.
class KestrelctlUartHangUp : public testing::Test {
 protected:
  KestrelctlUartHangUp() {
    EXPECT_EQ(RunProgram(folder_.Board({"start", "gone", "--config", UART_BOARD_CONFIG})).status,
              0);
    EXPECT_EQ(RunProgram({"mkfifo", input_}).status, 0);
    input_end_ = open(input_.c_str(), O_RDWR | O_CLOEXEC);
  }
  ~KestrelctlUartHangUp() override { EndInput(); }

  /// The command that sends the input to port 2 and receives it.
  Words Talk(const Words& options = {}) const {
    Words command = {"exec", "gone", "--", KESTRELCTL, "uart", "2", "--send", input_, "--receive"};
    command.insert(command.end(), options.begin(), options.end());
    return folder_.Board(command);
  }
  void Input(const std::string& text) const {
    EXPECT_EQ(write(input_end_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void EndInput() {
    close(input_end_);
    input_end_ = -1;
  }
  void HangUp() const { EXPECT_EQ(RunProgram(folder_.Board({"stop", "gone"})).status, 0); }

 private:
  const BoardFolder folder_;
  const TemporaryDirectory files_;
  const std::string input_ = files_.path() + "/input";
  int input_end_ = -1;
};

const std::string kHungUp = "kestrelctl: UART 2: the port has hung up: sent 3 bytes\n";

TEST_F(KestrelctlUartHangUp, EndsTheTransferAfterWhatHasCome) {
  BackgroundProgram talk(Talk());
  Input("abc");
  ASSERT_TRUE(talk.WaitForOutput("abc"));
  HangUp();
  EXPECT_THAT(talk.Wait(std::chrono::seconds(20)), Ends(1, "abc", kHungUp));
}

TEST_F(KestrelctlUartHangUp, IsAFailureToSendAlsoWhenAllBytesHaveCome) {
  BackgroundProgram talk(Talk({"--bytes", "3"}));
  Input("abc");
  ASSERT_TRUE(talk.WaitForOutput("abc"));
  HangUp();
  EXPECT_THAT(talk.Wait(std::chrono::seconds(20)), Ends(1, "abc", kHungUp));
}

TEST_F(KestrelctlUartHangUp, IsAFailureToSendAlsoWhenTheInputEndsAtThatMoment) {
  BackgroundProgram talk(Talk({"--bytes", "3"}));
  Input("abc");
  ASSERT_TRUE(talk.WaitForOutput("abc"));
  talk.Signal(SIGSTOP);
  HangUp();
  EndInput();
  talk.Signal(SIGCONT);
  EXPECT_THAT(talk.Wait(std::chrono::seconds(20)), Ends(1, "abc", kHungUp));
}

}  // namespace
}  // namespace kestrel::test
