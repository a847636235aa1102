// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_BROKEN_STANDARD_ERROR_H
#define KESTREL_TESTS_SUPPORT_BROKEN_STANDARD_ERROR_H

#include <cstdio>
#include <string>
#include <vector>

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

/// Descriptor 2 on a socket that keeps the bounds of what is written there, for the length of a
/// scope.
class PacketStandardError {
 public:
  PacketStandardError();
  ~PacketStandardError();
  PacketStandardError(const PacketStandardError&) = delete;
  PacketStandardError& operator=(const PacketStandardError&) = delete;

  /// What has been written since the last call, one element for each write.
  std::vector<std::string> Received() const;

 private:
  int saved_;
  int reader_ = -1;
};

/// The stream `stderr` fully buffered on the same file for the length of a scope. It is another
/// stream, because one that has been used does not take a new buffer reliably.
class BufferedStandardError {
 public:
  BufferedStandardError();
  ~BufferedStandardError();
  BufferedStandardError(const BufferedStandardError&) = delete;
  BufferedStandardError& operator=(const BufferedStandardError&) = delete;

 private:
  FILE* saved_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_BROKEN_STANDARD_ERROR_H
