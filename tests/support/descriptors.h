// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_DESCRIPTORS_H
#define KESTREL_TESTS_SUPPORT_DESCRIPTORS_H

#include <set>

namespace kestrel::test {

/// The descriptors that this process has open.
std::set<int> OpenDescriptors();

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_DESCRIPTORS_H
