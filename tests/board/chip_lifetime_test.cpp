// SPDX-License-Identifier: Apache-2.0
// The library's own descriptor of the chip is closed once: when the library is unloaded or, failing
// that, when the process exits.
#include "board_command.h"

namespace kestrel::test {
namespace {

class ChipLifetime : public BoardCommand {
 protected:
  /// Runs a program on a board that counts closings of the chip, and returns what it counted.
  std::string ClosingsOfTheChip(const std::vector<std::string>& program) {
    Start("bench", {"--fault", "close:/dev/gpiochip0=EIO"});
    std::vector<std::string> exec = {"exec", "bench"};
    exec.insert(exec.end(), program.begin(), program.end());
    EXPECT_EQ(Board(exec).status, 0);
    return Board({"fault"}).standard_output;
  }
};

TEST_F(ChipLifetime, EndsAtExit) {
  EXPECT_EQ(ClosingsOfTheChip({kProbe}), "fault: close:/dev/gpiochip0=EIO, 1 such call so far\n");
}

TEST_F(ChipLifetime, EndsAtUnloadAndNotAgainAtExit) {
  EXPECT_EQ(ClosingsOfTheChip({KESTREL_UNLOADING_TEST}),
            "fault: close:/dev/gpiochip0=EIO, 1 such call so far\n");
}

TEST_F(ChipLifetime, BeginsWithTheFirstOpen) {
  EXPECT_EQ(ClosingsOfTheChip({"true"}), "fault: close:/dev/gpiochip0=EIO, 0 such calls so far\n");
}

}  // namespace
}  // namespace kestrel::test
