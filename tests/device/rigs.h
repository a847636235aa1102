// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_DEVICE_RIGS_H
#define KESTREL_TESTS_DEVICE_RIGS_H

#include <memory>

#include "rig.h"

namespace kestrel::test {

/// The virtual board that this process runs on.
std::unique_ptr<Rig> MakeBoardRig();

/// The emulated ARM machine that this process runs in.
std::unique_ptr<Rig> MakeMachineRig();

/// Asks the Wi-Fi daemon to forget all networks, and waits until it is on none.
void RemoveAllNetworks();

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_DEVICE_RIGS_H
