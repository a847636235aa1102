// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_IN_CHILD_H
#define KESTREL_TESTS_SUPPORT_IN_CHILD_H

#include <functional>

namespace kestrel::test {

/// Runs `body` in a child of this process and returns what it returned, or 128 more than the number
/// of the signal that ended it.
int InChild(const std::function<int()>& body);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_IN_CHILD_H
