// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_OUTCOME_H
#define KESTREL_TESTS_SUPPORT_OUTCOME_H

#include <gmock/gmock.h>

#include <string>

#include "support/observed_call.h"

namespace kestrel::test {

MATCHER(LeaksNothing, "opens no descriptor and closes none") {
  return arg.new_descriptors.empty() && arg.lost_descriptors.empty();
}

/// The call gave `result`, wrote `text` to standard error and left every descriptor as it was.
inline testing::Matcher<const Observed&> Returns(int result, const std::string& text = "") {
  return testing::AllOf(testing::Field("result", &Observed::result, result),
                        testing::Field("standard_error", &Observed::standard_error, text),
                        LeaksNothing());
}

/// The call gave -1 with errno `error`, wrote `text` and left every descriptor as it was.
inline testing::Matcher<const Observed&> Fails(int error, const std::string& text) {
  return testing::AllOf(Returns(-1, text), testing::Field("error", &Observed::error, error));
}

/// The call refused its arguments: as Fails(), without a word.
inline testing::Matcher<const Observed&> IsRefused(int error) { return Fails(error, ""); }

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_OUTCOME_H
