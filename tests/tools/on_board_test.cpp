// SPDX-License-Identifier: Apache-2.0
#include "on_board.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace kestrel::test {
namespace {

TEST(BoardsOfTheseTests, KeepOutOfTheUsersFolder) {
  ASSERT_EQ(setenv("KESTREL_BOARD_DIR", "/dev/null", 1), 0);
  const SharedBoard board;
  EXPECT_THAT(board.Kestrelctl({"gpio", "get", "3"}), Ends(0, "3=low\n", ""));
  EXPECT_THAT(Kestrelctl({"gpio", "get", "3"}), Ends(0, "3=low\n", ""));
  unsetenv("KESTREL_BOARD_DIR");
}

}  // namespace
}  // namespace kestrel::test
