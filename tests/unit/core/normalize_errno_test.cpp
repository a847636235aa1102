// SPDX-License-Identifier: Apache-2.0
#include "core/normalize_errno.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <limits.h>

namespace {

constexpr int kErrnoBefore = 4242;

class ArgumentErrors : public testing::TestWithParam<int> {};

TEST_P(ArgumentErrors, BecomeEio) {
  errno = kErrnoBefore;
  EXPECT_EQ(kestrel::normalize_errno(GetParam()), EIO);
  EXPECT_EQ(errno, EIO);
}

INSTANTIATE_TEST_SUITE_P(NormalizeErrno, ArgumentErrors, testing::Values(EBADF, EFAULT, EINVAL));

class OtherErrors : public testing::TestWithParam<int> {};

TEST_P(OtherErrors, LeaveAndReturnTheCurrentErrno) {
  errno = kErrnoBefore;
  EXPECT_EQ(kestrel::normalize_errno(GetParam()), kErrnoBefore);
  EXPECT_EQ(errno, kErrnoBefore);
}

// 41, 46 and 54 are EBADF, EFAULT and EINVAL and 32 more: a shift that wraps would take them.
INSTANTIATE_TEST_SUITE_P(NormalizeErrno, OtherErrors,
                         testing::Values(0, 1, ENOENT, EIO, 8, 10, EACCES, 15, EBUSY, 21, 23, 31,
                                         32, 41, 46, 54, 63, 64, 73, -1, -9, -10, -18, -23, INT_MAX,
                                         INT_MIN, INT_MIN + EBADF));

TEST(NormalizeErrno, EveryErrnoButThreeIsKept) {
  for (int err = 0; err < 4096; ++err) {
    errno = err;
    const bool is_argument_error = err == EBADF || err == EFAULT || err == EINVAL;
    ASSERT_EQ(kestrel::normalize_errno(err), is_argument_error ? EIO : err);
  }
}

TEST(NormalizeErrno, ReturnsWhatAPrintInBetweenLeft) {
  errno = ENOSPC;
  EXPECT_EQ(kestrel::normalize_errno(ENOENT), ENOSPC);
  errno = 0;
  EXPECT_EQ(kestrel::normalize_errno(ENOENT), 0);
}

TEST(NormalizeErrno, OverridesWhatAPrintInBetweenLeft) {
  errno = ENOSPC;
  EXPECT_EQ(kestrel::normalize_errno(EINVAL), EIO);
}

}  // namespace
