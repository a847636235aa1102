// SPDX-License-Identifier: Apache-2.0
#include "uart/open_errno.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

using kestrel::uart::translateUartOpenErrno;

/// What the caller sees when `saved` made the open fail and errno is `current` since.
int Translated(int saved, int current) {
  errno = current;
  const int result = translateUartOpenErrno(saved);
  EXPECT_EQ(result, errno);
  return result;
}

TEST(UartOpenErrno, BecomesInputOutputErrorForFourValues) {
  for (int saved = -1; saved <= 140; ++saved) {
    const bool translated = saved == 1 || saved == 14 || saved == 19 || saved == 22;
    EXPECT_EQ(Translated(saved, saved), translated ? 5 : saved) << saved;
  }
}

TEST(UartOpenErrno, IsTheLatestWhenTheFirstIsNotTranslated) {
  EXPECT_EQ(Translated(ENOTTY, EINTR), EINTR);
  EXPECT_EQ(Translated(EBADF, EINVAL), EINVAL);
  EXPECT_EQ(Translated(0, 0), 0);
}

TEST(UartOpenErrno, IsTranslatedWhateverCameLater) {
  EXPECT_EQ(Translated(EINVAL, EINTR), EIO);
  EXPECT_EQ(Translated(EPERM, 0), EIO);
}

}  // namespace
