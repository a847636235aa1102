// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_ARGUMENTS_H
#define KESTREL_TOOLS_KESTRELCTL_ARGUMENTS_H

#include <kestrel/gpio.h>
#include <kestrel/uart.h>
#include <kestrel/wificonfig.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace kestrelctl {

using Milliseconds = std::chrono::milliseconds;

struct LineAndLevel {
  GpioLineId line;
  GpioLevel level;
};

/// Ends the parsing with a message of one line.
[[noreturn]] void Refuse(const std::string& message);

// Each turns what was typed into its meaning, or throws a CLI::ValidationError whose one line says
// what would have been right.
std::vector<GpioLineId> ParseLines(const std::vector<std::string>& texts);
std::vector<LineAndLevel> ParseAssignments(const std::vector<std::string>& texts);
GpioDriveMode ParseDrive(const std::string& text);
/// `purpose` is what is done for so long, such as "hold".
Milliseconds ParseSeconds(const std::string& seconds, const std::string& purpose);
Milliseconds ParseInterval(const std::string& milliseconds);
uint32_t ParseUart(const std::string& text);
uint32_t ParseBaud(const std::string& text);
UartFlowControl ParseFlow(const std::string& text);
uint64_t ParseByteCount(const std::string& text);
/// The bytes of a network's name: the text itself or, where `is_hex`, what its digits stand for.
std::string ParseSsid(const std::string& text, bool is_hex);
WifiSecurity ParseSecurity(const std::string& text);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_ARGUMENTS_H
