// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_OUTSIDE_WORLD_H
#define KESTREL_TESTS_BOARD_OUTSIDE_WORLD_H

#include <string>

namespace kestrel::test {

/// Acts on the board that this test runs on from outside: what somebody with wires would do.
void DriveFromOutside(int line, const std::string& level);

/// The level that somebody with a meter would see: "low" or "high".
std::string LevelSeenOutside(int line);

/// Adds a fault to the board; ClearFaults takes all of them away.
void AddFault(const std::string& fault);
void ClearFaults();

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_OUTSIDE_WORLD_H
