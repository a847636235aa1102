// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_OBSERVED_CALL_H
#define KESTREL_TESTS_SUPPORT_OBSERVED_CALL_H

#include <functional>
#include <ostream>
#include <set>
#include <string>

namespace kestrel::test {

/// What one call of a library function did, as its caller sees it.
struct Observed {
  int result;
  int error;                      ///< errno after the call; kUntouched when the call did not set it
  std::string standard_error;     ///< the bytes that the call wrote there
  std::set<int> new_descriptors;  ///< open after the call and not before
  std::set<int> lost_descriptors;  ///< open before the call and not after
};

/// errno before every observed call: a value that no system call gives.
inline constexpr int kUntouched = 4242;

/// Calls `function` with standard error redirected to a file and errno set to kUntouched.
Observed Observe(const std::function<int()>& function);

std::ostream& operator<<(std::ostream& stream, const Observed& observed);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_OBSERVED_CALL_H
