// SPDX-License-Identifier: Apache-2.0
#include <EASTL/string.h>
#include <gtest/gtest.h>
#include <signal.h>

#ifndef NDEBUG

namespace {

constexpr char kFailedCheck[] = "position <= size\\(\\)";

class StringDeathTest : public testing::Test {
 protected:
  eastl::string text_{"abc"};
  eastl::string other_{"other"};
};

TEST_F(StringDeathTest, SubstrBeyondTheEndAborts) {
  EXPECT_EXIT(text_.substr(4), testing::KilledBySignal(SIGABRT), kFailedCheck);
}

TEST_F(StringDeathTest, ConstructionBeyondTheEndAborts) {
  EXPECT_EXIT(eastl::string(text_, 4), testing::KilledBySignal(SIGABRT), kFailedCheck);
}

TEST_F(StringDeathTest, CompareBeyondTheEndAborts) {
  EXPECT_EXIT((void)text_.compare(4, 1, "a"), testing::KilledBySignal(SIGABRT), kFailedCheck);
  EXPECT_EXIT((void)text_.compare(4, 1, other_), testing::KilledBySignal(SIGABRT), kFailedCheck);
}

TEST_F(StringDeathTest, AssignBeyondTheEndAborts) {
  EXPECT_EXIT(other_.assign(text_, 4, 1), testing::KilledBySignal(SIGABRT), kFailedCheck);
}

TEST_F(StringDeathTest, AppendBeyondTheEndAborts) {
  EXPECT_EXIT(other_.append(text_, 4, 1), testing::KilledBySignal(SIGABRT), kFailedCheck);
}

}  // namespace

#endif
