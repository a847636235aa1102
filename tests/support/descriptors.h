// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_DESCRIPTORS_H
#define KESTREL_TESTS_SUPPORT_DESCRIPTORS_H

#include <sys/types.h>

#include <cstddef>
#include <set>

namespace kestrel::test {

/// The descriptors that this process has open.
std::set<int> OpenDescriptors();

/// How many descriptors a process that calls the library again and again has between its calls: the
/// fewest within a moment.
size_t DescriptorsBetweenCallsOf(pid_t process);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_DESCRIPTORS_H
