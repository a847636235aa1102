// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_DEVICE_DIFFERENCES_H
#define KESTREL_TESTS_DEVICE_DIFFERENCES_H

#include <errno.h>
#include <sys/stat.h>

#include "support/observed_call.h"

namespace kestrel::test {

/// One behaviour of which the virtual board and real parts each have their own.
template <typename Value>
struct Difference {
  Value board;
  Value real_parts;
};

// The reasons stand in docs/board-and-machine.md.

/// What the descriptor of the chip is, as S_IFMT has it.
inline constexpr Difference<mode_t> kKindOfChip = {S_IFSOCK, S_IFCHR};

/// Where the name of an open serial port begins.
inline constexpr Difference<const char*> kNameOfPort = {"/dev/pts/", "/dev/ttyS"};

/// The errno of asking a serial port for its modem lines, and of setting seven data bits.
inline constexpr Difference<int> kModemLines = {ENOTTY, 0};
inline constexpr Difference<int> kSevenDataBits = {EINVAL, 0};

/// Whether a serial port keeps a parity.
inline constexpr Difference<bool> kKeepsParity = {false, true};

/// Whether a port that an XOFF has stopped can still be written to.
inline constexpr Difference<bool> kStoppedPortTakesBytes = {false, true};

/// What one call of the library gives.
struct CallOutcome {
  int result;
  int error;
  const char* printed;
};

/// Counting stored networks when the supplicant has just been killed, and when it runs again.
inline constexpr Difference<CallOutcome> kCallToDeadSupplicant = {
    {-1, EIO, "[Kestrel:WifiConfig] Error performing operation: 32\n"}, {-1, EINVAL, ""}};
inline constexpr Difference<CallOutcome> kCallToRevivedSupplicant = {
    {-1, EIO, "[Kestrel:WifiConfig] Error performing operation: 22\n"}, {0, kUntouched, ""}};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_DEVICE_DIFFERENCES_H
