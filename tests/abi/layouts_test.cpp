// SPDX-License-Identifier: Apache-2.0
// What the library hands to the C library and the kernel, on each architecture that it is built
// for.
#include <gtest/gtest.h>
#include <stddef.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <termios.h>
#include <time.h>

namespace {

#if defined(__arm__)
constexpr size_t kWord = 4;
#elif defined(__x86_64__) || defined(__aarch64__)
constexpr size_t kWord = 8;
#endif

TEST(Layouts, FollowTheWordOfTheArchitecture) {
  EXPECT_EQ(sizeof(void*), kWord);
  EXPECT_EQ(sizeof(size_t), kWord);
  EXPECT_EQ(sizeof(time_t), kWord);
  EXPECT_EQ(sizeof(timeval), 2 * kWord);
  EXPECT_EQ(sizeof(timespec), 2 * kWord);
  EXPECT_EQ(sizeof(iovec), 2 * kWord);
  EXPECT_EQ(offsetof(iovec, iov_len), kWord);
}

TEST(Layouts, OfTerminalSettingsAreTheSameEverywhere) {
  EXPECT_EQ(sizeof(termios), 60U);
  EXPECT_EQ(offsetof(termios, c_lflag), 12U);
  EXPECT_EQ(offsetof(termios, c_cc), 17U);
  EXPECT_EQ(offsetof(termios, c_ispeed), 52U);
  EXPECT_EQ(offsetof(termios, c_ospeed), 56U);
}

}  // namespace
