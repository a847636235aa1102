// SPDX-License-Identifier: Apache-2.0
#include "wifi/error_to_errno.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <ostream>
#include <string>

#include "core/kestrel_category.h"
#include "support/outcome.h"
#include "unit/wifi/wifi_fixture.h"
#include "wifi/wifi_error.h"

namespace kestrel::test {
namespace {

struct Translation {
  int value;
  int error;
  bool is_printed;
};

void PrintTo(const Translation& translation, std::ostream* stream) { *stream << translation.value; }

class Translations : public testing::TestWithParam<Translation> {
 protected:
  std::string Text() const { return GetParam().is_printed ? OperationError(GetParam().value) : ""; }
};

INSTANTIATE_TEST_SUITE_P(Every, Translations,
                         testing::Values(Translation{0, 0, false}, Translation{1, ENODEV, true},
                                         Translation{2, EIO, true}, Translation{3, EINVAL, false},
                                         Translation{4, EIO, true}, Translation{5, EINVAL, false},
                                         Translation{6, EINVAL, false}, Translation{7, EIO, true},
                                         Translation{8, EIO, true}, Translation{9, EEXIST, false},
                                         Translation{10, EIO, true}, Translation{11, EIO, true},
                                         Translation{12, EIO, true}, Translation{13, EPERM, false},
                                         Translation{14, EIO, true}, Translation{EINVAL, EIO, true},
                                         Translation{EPIPE, EIO, true}, Translation{-1, EIO, true},
                                         Translation{INT_MAX, EIO, true},
                                         Translation{INT_MIN, EIO, true}),
                         [](const auto& test) {
                           return "Value" + std::to_string(static_cast<unsigned>(test.param.value));
                         });

TEST_P(Translations, FollowTheValueWhateverItsCategory) {
  for (const nwl::error_category* category :
       {static_cast<const nwl::error_category*>(&wifi::wifi_category()),
        static_cast<const nwl::error_category*>(&nwl::generic_category()),
        static_cast<const nwl::error_category*>(&kestrel_category())}) {
    const nwl::error_code error{GetParam().value, category};
    EXPECT_THAT(Observe([&] { return wifi::ErrorToErrno(error); }),
                Returns(GetParam().error, Text()));
  }
}

TEST_P(Translations, EndAFailedFunction) {
  const nwl::error_code error{GetParam().value, &wifi::wifi_category()};
  EXPECT_THAT(Observe([&] { return wifi::Fail(error); }), Fails(GetParam().error, Text()));
}

TEST(TranslatedError, SetsNothingItself) {
  EXPECT_EQ(Observe([] {
              return wifi::ErrorToErrno({6, &wifi::wifi_category()});
            }).error,
            kUntouched);
}

TEST(TranslatedError, MakesABadDescriptorOfTheSocketAnExistingNetwork) {
  EXPECT_EQ(wifi::ErrorToErrno({EBADF}), EEXIST);
}

TEST(TranslatedError, MakesADeniedOperationOfTheSocketAMissingDevice) {
  EXPECT_THAT(Observe([] { return wifi::ErrorToErrno({EPERM}); }),
              Returns(ENODEV, OperationError(1)));
}

TEST(WifiErrors, HaveTheirNumbers) {
  using wifi::MakeError;
  using wifi::WifiError;
  EXPECT_EQ(MakeError(WifiError::ParseFailed).value, 2);
  EXPECT_EQ(MakeError(WifiError::ClientUnavailable).value, 3);
  EXPECT_EQ(MakeError(WifiError::PropertyMissing).value, 4);
  EXPECT_EQ(MakeError(WifiError::InvalidArgument).value, 5);
  EXPECT_EQ(MakeError(WifiError::CommandFailed).value, 6);
  EXPECT_EQ(MakeError(WifiError::NetworkIdOutOfRange).value, 7);
  EXPECT_EQ(MakeError(WifiError::NetworkNotFound).value, 8);
  EXPECT_EQ(MakeError(WifiError::NetworkAlreadyExists).value, 9);
  EXPECT_EQ(MakeError(WifiError::InvalidEnabledState).value, 10);
  EXPECT_EQ(MakeError(WifiError::ParseFailed).category, &wifi::wifi_category());
}

}  // namespace
}  // namespace kestrel::test
