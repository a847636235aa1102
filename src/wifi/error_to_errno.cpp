// SPDX-License-Identifier: Apache-2.0
#include "wifi/error_to_errno.h"

#include <errno.h>
#include <stdint.h>
#include <stdio.h>

#include "core/refuse.h"

namespace wifi {
namespace {

struct Translation {
  int32_t value;
  int error;
  bool is_printed;
};

constexpr Translation kTranslations[] = {
    {0, 0, false},       // no error
    {1, ENODEV, true},   // raised by nothing in the library
    {3, EINVAL, false},  // WifiError::ClientUnavailable
    {5, EINVAL, false},  // WifiError::InvalidArgument
    {6, EINVAL, false},  // WifiError::CommandFailed
    {9, EEXIST, false},  // WifiError::NetworkAlreadyExists
    {13, EPERM, false},  // raised by nothing in the library
};

Translation Find(int32_t value) {
  for (const Translation& translation : kTranslations) {
    if (translation.value == value) {
      return translation;
    }
  }
  return {value, EIO, true};
}

}  // namespace

int ErrorToErrno(nwl::error_code error) {
  const Translation translation = Find(error.value);
  if (translation.is_printed) {
    fprintf(stderr, "[Kestrel:WifiConfig] Error performing operation: %d\n", error.value);
  }
  return translation.error;
}

int Fail(nwl::error_code error) { return kestrel::Refuse(ErrorToErrno(error)); }

}  // namespace wifi
