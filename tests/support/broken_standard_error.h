// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_BROKEN_STANDARD_ERROR_H
#define KESTREL_TESTS_SUPPORT_BROKEN_STANDARD_ERROR_H

namespace kestrel::test {

/// Descriptor 2 closed for the length of a scope: writing there fails with EBADF.
class ClosedStandardError {
 public:
  ClosedStandardError();
  ~ClosedStandardError();
  ClosedStandardError(const ClosedStandardError&) = delete;
  ClosedStandardError& operator=(const ClosedStandardError&) = delete;

 private:
  int saved_;
};

/// Descriptor 2 on a device without room for the length of a scope: writing there fails with
/// ENOSPC.
class FullStandardError {
 public:
  FullStandardError();
  ~FullStandardError();
  FullStandardError(const FullStandardError&) = delete;
  FullStandardError& operator=(const FullStandardError&) = delete;

 private:
  int saved_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_BROKEN_STANDARD_ERROR_H
