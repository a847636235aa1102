// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_OUTSIDE_WORLD_H
#define KESTREL_TESTS_BOARD_OUTSIDE_WORLD_H

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace kestrel::test {

/// Acts on the board that this test runs on from outside: what somebody with wires would do.
void DriveFromOutside(int line, const std::string& level);

/// The level that somebody with a meter would see: "low" or "high".
std::string LevelSeenOutside(int line);

/// Adds a fault to the board; ClearFaults takes all of them away.
void AddFault(const std::string& fault);
void ClearFaults();

/// What `show` says of a serial port.
std::string PortOutside(int number);

/// Lets a serial port not keep a setting, or keep all again.
void ForgetSettings(int port, const std::string& setting);
void KeepAllSettings(int port);

/// Makes the Wi-Fi daemon reply by the rules of a script, and by itself to what none of them fits.
void LetWifiDaemonReply(const std::string& rules);

/// How many commands the Wi-Fi daemon has got from a process over the connection that it has now.
uint64_t WifiCommandsOf(pid_t process);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_OUTSIDE_WORLD_H
