// SPDX-License-Identifier: Apache-2.0
#include <EASTL/string.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <memory>
#include <nwl/expected>
#include <utility>

#include "core/kestrel_category.h"
#include "wifi/wifi_category.h"

namespace {

using nwl::Expected;

// The value and the error stand side by side.
static_assert(sizeof(Expected<void*>) == sizeof(void*) + sizeof(nwl::error_code));

constexpr char kUnsetError[] =
    ": libs/libnwl/inc/public/nwl/expected:87: Expected: Assertion `error' failed\\.\n(qemu: "
    "[^\n]*\n)?$";

static_assert(sizeof(Expected<void>) == sizeof(nwl::error_code));

Expected<void> FailWithoutValue(const nwl::error_code& error) { return error; }

Expected<int> Fail(const nwl::error_code& error) { return error; }

Expected<eastl::string> PassOn(const Expected<int>& result) { return result.error(); }

TEST(Expected, HoldsAValue) {
  const Expected<int> result = 7;
  EXPECT_TRUE(result.has_value());
  EXPECT_EQ(result.value(), 7);
}

TEST(Expected, HasADefaultErrorBesideAValue) {
  const Expected<int> result = 0;
  EXPECT_TRUE(result.has_value());
  EXPECT_FALSE(result.error());
  EXPECT_EQ(result.error().category, &nwl::generic_category());
}

TEST(Expected, HoldsAnError) {
  const Expected<int> result = Fail({5, &wifi::wifi_category()});
  EXPECT_FALSE(result.has_value());
  EXPECT_EQ(result.error().value, 5);
  EXPECT_EQ(result.error().category, &wifi::wifi_category());
}

TEST(Expected, TakesNegativeErrors) {
  const Expected<int> result = Fail({-1, &kestrel::kestrel_category()});
  EXPECT_FALSE(result.has_value());
  EXPECT_EQ(result.error().value, -1);
}

TEST(Expected, PassesValueAndCategoryOfAnErrorOn) {
  const Expected<eastl::string> result = PassOn(Fail({13, &kestrel::kestrel_category()}));
  EXPECT_FALSE(result.has_value());
  EXPECT_EQ(result.error().value, 13);
  EXPECT_EQ(result.error().category, &kestrel::kestrel_category());
}

TEST(Expected, GivesAMoveOnlyValueAway) {
  Expected<std::unique_ptr<int>> result = std::make_unique<int>(3);
  ASSERT_TRUE(result.has_value());
  const std::unique_ptr<int> owner = std::move(result).value();
  EXPECT_EQ(*owner, 3);
  // NOLINTNEXTLINE(bugprone-use-after-move): it was moved out of the result, not copied
  EXPECT_EQ(result.value(), nullptr);
}

TEST(Expected, HoldsAMoveOnlyTypesError) {
  const Expected<std::unique_ptr<int>> result = nwl::error_code{EIO};
  EXPECT_FALSE(result.has_value());
  EXPECT_EQ(result.error().value, EIO);
}

TEST(Expected, LetsItsValueBeChanged) {
  Expected<eastl::string> result = eastl::string("SCAN");
  result.value().append("_RESULTS");
  EXPECT_STREQ(result.value().c_str(), "SCAN_RESULTS");
}

TEST(ExpectedNothing, IsSuccess) {
  const Expected<void> result;
  EXPECT_TRUE(result.has_value());
  EXPECT_FALSE(result.error());
  EXPECT_EQ(result.error().category, &nwl::generic_category());
}

TEST(ExpectedNothing, HoldsAnError) {
  const Expected<void> result = FailWithoutValue({2, &wifi::wifi_category()});
  EXPECT_FALSE(result.has_value());
  EXPECT_EQ(result.error().value, 2);
  EXPECT_EQ(result.error().category, &wifi::wifi_category());
}

TEST(ExpectedDeathTest, AbortsWithoutAValueWhenTheErrorIsNotSet) {
  EXPECT_EXIT(FailWithoutValue({}), testing::KilledBySignal(SIGABRT), kUnsetError);
}

TEST(ExpectedDeathTest, AbortsWhenTheErrorIsNotSet) {
  EXPECT_EXIT(Fail({}), testing::KilledBySignal(SIGABRT), kUnsetError);
}

TEST(ExpectedDeathTest, AbortsForAnyCategoryThatIsNotSet) {
  EXPECT_EXIT(Fail({0, &wifi::wifi_category()}), testing::KilledBySignal(SIGABRT), kUnsetError);
  EXPECT_EXIT(Fail({0, &kestrel::kestrel_category()}), testing::KilledBySignal(SIGABRT),
              kUnsetError);
}

TEST(ExpectedDeathTest, AbortsWhenAFailedCallLeftNoErrno) {
  errno = 0;
  EXPECT_EXIT(Fail({errno}), testing::KilledBySignal(SIGABRT), kUnsetError);
}

}  // namespace
