// SPDX-License-Identifier: Apache-2.0
#include "protocol/path_list.h"

#include <gtest/gtest.h>

namespace kestrel::board::wire {
namespace {

TEST(PathList, EntriesAreWholePaths) {
  EXPECT_TRUE(IsListed("/dev/a:/dev/b", "/dev/a"));
  EXPECT_TRUE(IsListed("/dev/a:/dev/b", "/dev/b"));
  EXPECT_FALSE(IsListed("/dev/a:/dev/b", "/dev/"));
  EXPECT_FALSE(IsListed("/dev/a:/dev/b", "/dev/bb"));
  EXPECT_FALSE(IsListed("/dev/a:/dev/b", "/dev/a:/dev/b"));
  EXPECT_FALSE(IsListed("", ""));
}

TEST(PathList, EntryThatEndsInAHashStandsForEveryNumber) {
  EXPECT_TRUE(IsListed("/dev/a:/dev/tty#:/dev/b", "/dev/tty0"));
  EXPECT_TRUE(IsListed("/dev/tty#", "/dev/tty255"));
  EXPECT_TRUE(IsListed("/dev/tty#:/dev/b", "/dev/b"));
  EXPECT_FALSE(IsListed("/dev/tty#", "/dev/tty"));
  EXPECT_FALSE(IsListed("/dev/tty#", "/dev/tty#"));
  EXPECT_FALSE(IsListed("/dev/tty#", "/dev/ttyS0"));
  EXPECT_FALSE(IsListed("/dev/tty#", "/dev/tty0x"));
  EXPECT_FALSE(IsListed("/dev/tty#", "/dev/tt"));
}

}  // namespace
}  // namespace kestrel::board::wire
