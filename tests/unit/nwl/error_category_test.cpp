// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include <nwl/error_category>
#include <type_traits>

#include "unit/vtable_slot.h"

namespace {

static_assert(std::is_abstract_v<nwl::error_category>);
static_assert(std::has_virtual_destructor_v<nwl::error_category>);
static_assert(sizeof(nwl::error_category) == sizeof(void*));
static_assert(std::is_base_of_v<nwl::error_category, nwl::GenericErrorCategory>);
static_assert(sizeof(nwl::GenericErrorCategory) == sizeof(void*));

TEST(ErrorCategory, NameAndMessageFollowTheTwoDestructors) {
  EXPECT_EQ(kestrel::test::VtableSlot(&nwl::error_category::name), 2);
  EXPECT_EQ(kestrel::test::VtableSlot(&nwl::error_category::message), 3);
}

template <typename Category>
struct Extended : Category {
  virtual void First() {}
};

TEST(ErrorCategory, EndsItsMethodsWithTheMessage) {
  EXPECT_EQ(kestrel::test::VtableSlot(&Extended<nwl::error_category>::First), 4);
  EXPECT_EQ(kestrel::test::VtableSlot(&Extended<nwl::GenericErrorCategory>::First), 4);
}

TEST(GenericCategory, IsNamedGeneric) { EXPECT_STREQ(nwl::generic_category().name(), "generic"); }

TEST(GenericCategory, IsTheSameInstanceEveryTime) {
  EXPECT_EQ(&nwl::generic_category(), &nwl::generic_category());
}

TEST(GenericCategory, MessageIsTheSystemsText) {
  for (const int code : {0, ENOENT, EACCES, EBUSY, -1, 100000, INT_MAX, INT_MIN}) {
    const eastl::string message = nwl::generic_category().message(code);
    EXPECT_STREQ(message.c_str(), strerror(code));
  }
  EXPECT_STREQ(nwl::generic_category().message(ENOENT).c_str(), "No such file or directory");
}

TEST(GenericCategory, MessageIsACopy) {
  const eastl::string first = nwl::generic_category().message(100001);
  const eastl::string second = nwl::generic_category().message(100002);
  EXPECT_STREQ(first.c_str(), "Unknown error 100001");
  EXPECT_STREQ(second.c_str(), "Unknown error 100002");
}

TEST(GenericCategory, IsReachedThroughTheBase) {
  const nwl::error_category& category = nwl::generic_category();
  EXPECT_STREQ(category.name(), "generic");
  EXPECT_STREQ(category.message(EIO).c_str(), strerror(EIO));
}

}  // namespace
