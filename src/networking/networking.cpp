// SPDX-License-Identifier: Apache-2.0
#include <kestrel/networking.h>

#include "networking/network_status.h"

int Networking_IsNetworkingReady(bool* outIsNetworkingReady) {
  return kestrel::networking::GetNetworking().queryNetworkingReady(outIsNetworkingReady);
}
