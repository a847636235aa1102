// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <limits.h>

#include <set>
#include <thread>
#include <type_traits>
#include <vector>

#include "core/kestrel_category.h"
#include "unit/vtable_slot.h"
#include "wifi/wifi_category.h"

namespace {

using kestrel::test::VtableSlot;

template <typename Category>
constexpr bool kIsCategoryWithoutData = std::is_base_of_v<nwl::error_category, Category> &&
                                        sizeof(Category) == sizeof(nwl::error_category);

static_assert(kIsCategoryWithoutData<kestrel::KestrelErrorCategoryImpl>);
static_assert(kIsCategoryWithoutData<wifi::WifiErrorCategoryImpl>);
static_assert(!std::is_base_of_v<nwl::GenericErrorCategory, kestrel::KestrelErrorCategoryImpl>);
static_assert(!std::is_base_of_v<kestrel::KestrelErrorCategoryImpl, wifi::WifiErrorCategoryImpl>);

template <typename Getter>
size_t InstancesSeenByThreads(Getter getter) {
  std::vector<const nwl::error_category*> seen(4);
  std::vector<std::thread> threads;
  threads.reserve(seen.size());
  for (const nwl::error_category*& category : seen) {
    threads.emplace_back([&category, getter] { category = &getter(); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return std::set<const nwl::error_category*>(seen.begin(), seen.end()).size();
}

TEST(KestrelCategory, HasItsName) {
  EXPECT_STREQ(kestrel::kestrel_category().name(), "Kestrel Error");
}

TEST(WifiCategory, HasItsName) { EXPECT_STREQ(wifi::wifi_category().name(), "Wifi"); }

struct DecimalMessage {
  int code;
  const char* text;
};

class DecimalMessages : public testing::TestWithParam<DecimalMessage> {};

TEST_P(DecimalMessages, AreTheSameInBothCategories) {
  const auto [code, text] = GetParam();
  EXPECT_STREQ(kestrel::kestrel_category().message(code).c_str(), text);
  EXPECT_STREQ(wifi::wifi_category().message(code).c_str(), text);
}

INSTANTIATE_TEST_SUITE_P(Codes, DecimalMessages,
                         testing::Values(DecimalMessage{13, "13"}, DecimalMessage{-1, "-1"},
                                         DecimalMessage{0, "0"}, DecimalMessage{2, "2"},
                                         DecimalMessage{INT_MAX, "2147483647"},
                                         DecimalMessage{INT_MIN, "-2147483648"}));

TEST(Categories, KeepTheOrderOfTheBasesMethods) {
  EXPECT_EQ(VtableSlot(&kestrel::KestrelErrorCategoryImpl::name), 2);
  EXPECT_EQ(VtableSlot(&kestrel::KestrelErrorCategoryImpl::message), 3);
  EXPECT_EQ(VtableSlot(&wifi::WifiErrorCategoryImpl::name), 2);
  EXPECT_EQ(VtableSlot(&wifi::WifiErrorCategoryImpl::message), 3);
}

template <typename Category>
struct Extended : Category {
  virtual void First() {}
};

TEST(Categories, AddNoVirtualMethodToTheBase) {
  EXPECT_EQ(VtableSlot(&Extended<kestrel::KestrelErrorCategoryImpl>::First), 4);
  EXPECT_EQ(VtableSlot(&Extended<wifi::WifiErrorCategoryImpl>::First), 4);
}

TEST(Categories, AreTheSameInstanceForEveryThread) {
  EXPECT_EQ(InstancesSeenByThreads(nwl::generic_category), 1u);
  EXPECT_EQ(InstancesSeenByThreads(kestrel::kestrel_category), 1u);
  EXPECT_EQ(InstancesSeenByThreads(wifi::wifi_category), 1u);
}

TEST(Categories, AreTheSameInstanceEveryTime) {
  EXPECT_EQ(&kestrel::kestrel_category(), &kestrel::kestrel_category());
  EXPECT_EQ(&wifi::wifi_category(), &wifi::wifi_category());
}

TEST(Categories, AreToldApartByAddress) {
  const std::set<const nwl::error_category*> categories = {
      &nwl::generic_category(), &kestrel::kestrel_category(), &wifi::wifi_category()};
  EXPECT_EQ(categories.size(), 3u);
}

}  // namespace
