// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_NETWORKING_NETWORK_STATUS_H
#define KESTREL_NETWORKING_NETWORK_STATUS_H

#include "core/test_placeholder.h"

namespace kestrel::networking {

/// Answers for the device's networking from the status file. Another source of the status takes its
/// place by overriding the query.
class Networking : public vesta::test::support::test_placeholder {
 public:
  constexpr Networking() = default;

  /// Returns 0 with the answer in `isReady`, or -1 with errno set.
  virtual int queryNetworkingReady(bool* isReady);
};

Networking& GetNetworking();

}  // namespace kestrel::networking

#endif  // KESTREL_NETWORKING_NETWORK_STATUS_H
