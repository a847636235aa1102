// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_SYSTEM_CALLS_SYSTEM_CALL_TRACE_H
#define KESTREL_TESTS_UNIT_SYSTEM_CALLS_SYSTEM_CALL_TRACE_H

#include <functional>
#include <vector>

namespace kestrel::test {

/// The numbers of the system calls that the second of two calls of `function` makes in a child of
/// this process, as the kernel sees them. The first call makes what is made once for a process.
std::vector<long> SystemCallsOf(const std::function<void()>& function);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_SYSTEM_CALLS_SYSTEM_CALL_TRACE_H
