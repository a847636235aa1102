// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_FAILING_CALL_H
#define KESTREL_TESTS_BOARD_FAILING_CALL_H

#include <string>

namespace kestrel::test {

/// For as long as it lives, one system call of this process fails: the first of that name. Calls
/// that can fail so are listed at the end of failing_call.cpp; "pwrite half" succeeds and writes
/// half of what it was given, and "unlinkat and end" succeeds and ends the process.
class FailingCall {
 public:
  FailingCall(const char* name, int error);
  ~FailingCall();
  FailingCall(const FailingCall&) = delete;
  FailingCall& operator=(const FailingCall&) = delete;

  /// Whether the call was made and failed.
  static bool HasFailed();
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_FAILING_CALL_H
