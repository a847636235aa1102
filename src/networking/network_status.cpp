// SPDX-License-Identifier: Apache-2.0
#include "networking/network_status.h"

#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

#include <nwl/expected>

#include "core/file_owner.h"
#include "core/refuse.h"

namespace kestrel::networking {
namespace {

constexpr char kStatusPath[] = "/var/run/network_status";

/// Of no effect, since nothing is created; it goes out with every open all the same.
constexpr mode_t kStatusMode = 0704;

/// The flags at the start of the status file. The second one says nothing about readiness.
constexpr size_t kFlagCount = 5;

bool AreReady(const uint8_t (&flags)[kFlagCount]) {
  return flags[0] != 0 && flags[2] != 0 && flags[4] != 0 && flags[3] != 0;
}

nwl::error_code LastError() { return {errno, &nwl::generic_category()}; }

nwl::Expected<bool> ReadReadiness() {
  const FileOwner file(open(kStatusPath, O_RDONLY | O_CLOEXEC, kStatusMode));
  if (file.get() == -1) {
    return LastError();
  }
  // Flags that a short file lacks stay zero.
  uint8_t flags[kFlagCount] = {};
  if (read(file.get(), flags, sizeof flags) == -1) {
    return LastError();
  }
  return AreReady(flags);
}

}  // namespace

int Networking::queryNetworkingReady(bool* isReady) {
  if (isReady == nullptr) {
    return Refuse(EFAULT);
  }
  const nwl::Expected<bool> readiness = ReadReadiness();
  if (readiness.has_value()) {
    *isReady = readiness.value();
    return 0;
  }
  *isReady = false;
  fprintf(stderr, "[Kestrel:Networking] error determining device networking state: %d\n",
          readiness.error().value);
  // Whatever the cause, it may have passed by the next call.
  return Refuse(EBUSY);
}

Networking& GetNetworking() {
  static Networking instance;
  return instance;
}

}  // namespace kestrel::networking
