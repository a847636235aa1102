// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_DEVICE_DIFFERENCES_H
#define KESTREL_TESTS_DEVICE_DIFFERENCES_H

namespace kestrel::test {

/// One behaviour of which the virtual board and real parts each have their own.
template <typename Value>
struct Difference {
  Value board;
  Value real_parts;
};

// The reasons stand in docs/board-and-machine.md.

/// Whether a port that an XOFF has stopped can still be written to.
inline constexpr Difference<bool> kStoppedPortTakesBytes = {false, true};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_DEVICE_DIFFERENCES_H
