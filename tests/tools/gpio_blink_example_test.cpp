// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include "on_board.h"

namespace kestrel::test {
namespace {

TEST(GpioBlinkExample, BlinksAndReadsBack) {
  EXPECT_THAT(RunOnBoard({GPIO_BLINK, "7", "8", "3"}),
              Ends(0,
                   "round  1   LED high -> reads high   button low\n"
                   "round  2   LED low  -> reads low    button low\n"
                   "round  3   LED high -> reads high   button low\n",
                   "blinking line 7, following line 8\n"));
}

TEST(GpioBlinkExample, FollowsTheButtonUntilInterrupted) {
  const SharedBoard board;
  BackgroundProgram blink(board.Exec({GPIO_BLINK}));
  ASSERT_TRUE(blink.WaitForOutput("button low\n"));
  board.Drive(3, "high");
  ASSERT_TRUE(blink.WaitForOutput("button high\n"));
  blink.Signal(SIGTERM);
  const ProgramResult result = blink.Wait();
  EXPECT_EQ(result.status, 128 + SIGTERM);
  EXPECT_EQ(result.standard_error, "blinking line 4, following line 3\nthe button went high\n");
}

TEST(GpioBlinkExample, SaysWhatIsBusy) {
  const SharedBoard board;
  BackgroundProgram first(board.Exec({GPIO_BLINK}));
  ASSERT_TRUE(first.WaitForOutput("round"));
  EXPECT_THAT(RunProgram(board.Exec({GPIO_BLINK, "5", "3", "1"})),
              Ends(1, "",
                   "[Kestrel:GPIO] Problem opening GPIO: Device or resource busy (16)\n"
                   "gpio_blink: cannot open the button: Device or resource busy\n"));
}

struct Fault {
  std::string fault;
  std::string problem;
  std::string doing;
};

void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.fault; }

class GpioBlinkFaults : public testing::TestWithParam<Fault> {};

INSTANTIATE_TEST_SUITE_P(Every, GpioBlinkFaults,
                         testing::Values(Fault{"open:/dev/gpiochip0=EIO", "opening GPIO chip",
                                               "open the LED"},
                                         Fault{"ioctl:GPIO_GET_LINEHANDLE_IOCTL=EIO@2",
                                               "opening GPIO", "open the button"},
                                         Fault{"ioctl:GPIOHANDLE_SET_LINE_VALUES_IOCTL=EIO",
                                               "setting GPIO value", "drive the LED"},
                                         Fault{"ioctl:GPIOHANDLE_GET_LINE_VALUES_IOCTL=EIO",
                                               "getting GPIO value", "read the LED back"},
                                         Fault{"ioctl:GPIOHANDLE_GET_LINE_VALUES_IOCTL=EIO@2",
                                               "getting GPIO value", "read the button"}));

TEST_P(GpioBlinkFaults, EndItWithAMessage) {
  const ProgramResult result = RunOnBoard({GPIO_BLINK, "4", "3", "1"}, {GetParam().fault});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_output, "");
  EXPECT_THAT(result.standard_error,
              testing::EndsWith("[Kestrel:GPIO] Problem " + GetParam().problem +
                                ": Input/output error (5)\ngpio_blink: cannot " + GetParam().doing +
                                ": Input/output error\n"));
}

TEST(GpioBlinkExample, RefusesWrongArguments) {
  const std::string usage = "usage: gpio_blink [LED [BUTTON [ROUNDS]]], numbers from 0 on\n";
  for (const Words& command :
       {Words{GPIO_BLINK, "x"}, Words{GPIO_BLINK, "4", "-3"}, Words{GPIO_BLINK, "4", "3", ""},
        Words{GPIO_BLINK, "4", "3", "1", "0"}, Words{GPIO_BLINK, "99999999999"}}) {
    EXPECT_THAT(RunProgram(command), Ends(2, "", usage));
  }
}

}  // namespace
}  // namespace kestrel::test
