// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stddef.h>
#include <stdint.h>

#include <nwl/error_code>
#include <type_traits>
#include <utility>

#include "wifi/wifi_category.h"

namespace {

static_assert(std::is_same_v<decltype(nwl::error_code::value), int32_t>);
static_assert(std::is_same_v<decltype(nwl::error_code::category), const nwl::error_category*>);
static_assert(offsetof(nwl::error_code, value) == 0);
static_assert(offsetof(nwl::error_code, category) == sizeof(void*));
static_assert(sizeof(nwl::error_code) == 2 * sizeof(void*));
static_assert(std::is_trivially_copyable_v<nwl::error_code>);
static_assert(!std::is_convertible_v<nwl::error_code, bool>);

TEST(ErrorCode, DefaultIsGenericAndNotSet) {
  const nwl::error_code error;
  EXPECT_EQ(error.value, 0);
  EXPECT_EQ(error.category, &nwl::generic_category());
  EXPECT_FALSE(error);
}

TEST(ErrorCode, IsSetExactlyWhenItsValueIsNotZero) {
  for (const int32_t value : {1, 5, -1, INT_MAX, INT_MIN}) {
    EXPECT_TRUE((nwl::error_code{value, &nwl::generic_category()})) << value;
    EXPECT_TRUE((nwl::error_code{value, &wifi::wifi_category()})) << value;
  }
  EXPECT_FALSE((nwl::error_code{0, &wifi::wifi_category()}));
}

TEST(ErrorCode, FailedCallIsErrnoInTheGenericCategory) {
  errno = ENODEV;
  const nwl::error_code error{errno};
  EXPECT_EQ(error.value, ENODEV);
  EXPECT_EQ(error.category, &nwl::generic_category());
}

TEST(ErrorCode, CopiesAndMovesBothFields) {
  nwl::error_code source{5, &wifi::wifi_category()};
  const nwl::error_code copy = source;
  // NOLINTNEXTLINE(performance-move-const-arg): that a move is a copy is what is tested
  const nwl::error_code moved = std::move(source);
  EXPECT_EQ(copy.value, 5);
  EXPECT_EQ(copy.category, &wifi::wifi_category());
  EXPECT_EQ(moved.value, 5);
  EXPECT_EQ(moved.category, &wifi::wifi_category());
}

}  // namespace
