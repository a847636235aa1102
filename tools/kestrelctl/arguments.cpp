// SPDX-License-Identifier: Apache-2.0
#include "arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>
#include <set>

#include "terminal_text.h"
#include "wifi_security.h"

namespace kestrelctl {
namespace {

constexpr double kLongestTime = 24 * 60 * 60;
constexpr int kLongestInterval = 60000;
constexpr size_t kLongestSsid = 32;

/// The whole of `text` as a number.
template <typename Number>
std::optional<Number> ParseNumber(const std::string& text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

GpioLineId ParseLine(const std::string& text) {
  const std::optional<GpioLineId> line = ParseNumber<GpioLineId>(text);
  if (!line || *line < 0) {
    Refuse("'" + text + "' is no line: give a number from 0 to " + std::to_string(INT32_MAX));
  }
  return *line;
}

struct Level {
  const char* name;
  GpioLevel level;
};

constexpr Level kLevels[] = {
    {"0", GpioLevel_Low},
    {"1", GpioLevel_High},
    {"low", GpioLevel_Low},
    {"high", GpioLevel_High},
};

GpioLevel ParseLevel(const std::string& text) {
  for (const Level& known : kLevels) {
    if (text == known.name) {
      return known.level;
    }
  }
  Refuse("'" + text + "' is no level: give 0, 1, low or high");
}

LineAndLevel ParseAssignment(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) {
    Refuse("'" + text + "' sets nothing: give LINE=LEVEL, such as 4=high");
  }
  return {ParseLine(text.substr(0, equals)), ParseLevel(text.substr(equals + 1))};
}

struct Drive {
  const char* name;
  GpioDriveMode mode;
};

constexpr Drive kDrives[] = {
    {"push-pull", GpioDriveMode_PushPull},
    {"open-drain", GpioDriveMode_OpenDrain},
    {"open-source", GpioDriveMode_OpenSource},
};

constexpr uint32_t kHighestUart = 255;

constexpr uint32_t kBauds[] = {9600,   19200,  38400,  57600,   115200,  230400,  460800,
                               500000, 576000, 921600, 1000000, 1152000, 1500000, 2000000};

struct Flow {
  const char* name;
  UartFlowControl control;
};

constexpr Flow kFlows[] = {
    {"none", UartFlowControl_None},
    {"rts-cts", UartFlowControl_RtsCts},
    {"xon-xoff", UartFlowControl_XonXoff},
};

void RefuseRepetition(std::set<GpioLineId>& seen, GpioLineId line) {
  if (!seen.insert(line).second) {
    Refuse("line " + std::to_string(line) + " is given twice: name each line once");
  }
}

/// The byte that two hexadecimal digits at `position` stand for.
std::optional<char> ParseHexByte(const std::string& text, size_t position) {
  uint8_t byte = 0;
  const char* const begin = text.data() + position;
  const char* const end = begin + std::min<size_t>(2, text.size() - position);
  const auto [rest, error] = std::from_chars(begin, end, byte, 16);
  return error == std::errc() && rest == begin + 2 ? std::optional(static_cast<char>(byte))
                                                   : std::nullopt;
}

std::string ParseHexBytes(const std::string& text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); i += 2) {
    const std::optional<char> byte = ParseHexByte(text, i);
    if (!byte) {
      Refuse(Quoted(text) + " is no name in hexadecimal: give two digits for each byte");
    }
    bytes += *byte;
  }
  return bytes;
}

}  // namespace

void Refuse(const std::string& message) {
  throw CLI::ValidationError(message, CLI::ExitCodes::ValidationError);
}

std::vector<GpioLineId> ParseLines(const std::vector<std::string>& texts) {
  std::vector<GpioLineId> lines;
  std::set<GpioLineId> seen;
  for (const std::string& text : texts) {
    lines.push_back(ParseLine(text));
    RefuseRepetition(seen, lines.back());
  }
  return lines;
}

std::vector<LineAndLevel> ParseAssignments(const std::vector<std::string>& texts) {
  std::vector<LineAndLevel> assignments;
  std::set<GpioLineId> seen;
  for (const std::string& text : texts) {
    assignments.push_back(ParseAssignment(text));
    RefuseRepetition(seen, assignments.back().line);
  }
  return assignments;
}

GpioDriveMode ParseDrive(const std::string& text) {
  for (const Drive& known : kDrives) {
    if (text == known.name) {
      return known.mode;
    }
  }
  Refuse("'" + text + "' is no drive: give push-pull, open-drain or open-source");
}

Milliseconds ParseSeconds(const std::string& seconds, const std::string& purpose) {
  const std::optional<double> number = ParseNumber<double>(seconds);
  // Written so that "nan" is refused as well.
  if (!number || !(*number >= 0 && *number <= kLongestTime)) {
    Refuse("'" + seconds + "' is no time to " + purpose +
           ": give seconds from 0 to 86400, such as 2.5");
  }
  return std::chrono::duration_cast<Milliseconds>(std::chrono::duration<double>(*number));
}

Milliseconds ParseInterval(const std::string& milliseconds) {
  const std::optional<int> number = ParseNumber<int>(milliseconds);
  if (!number || *number < 1 || *number > kLongestInterval) {
    Refuse("'" + milliseconds + "' is no interval: give milliseconds from 1 to 60000");
  }
  return Milliseconds(*number);
}

uint32_t ParseUart(const std::string& text) {
  const std::optional<uint32_t> number = ParseNumber<uint32_t>(text);
  if (!number || *number > kHighestUart) {
    Refuse("'" + text + "' is no UART: give a number from 0 to " + std::to_string(kHighestUart));
  }
  return *number;
}

uint32_t ParseBaud(const std::string& text) {
  const std::optional<uint32_t> number = ParseNumber<uint32_t>(text);
  std::string known;
  for (const uint32_t baud : kBauds) {
    if (number == baud) {
      return baud;
    }
    known += (known.empty() ? "" : baud == std::end(kBauds)[-1] ? " or " : ", ");
    known += std::to_string(baud);
  }
  Refuse("'" + text + "' is no baud rate: give " + known);
}

UartFlowControl ParseFlow(const std::string& text) {
  for (const Flow& known : kFlows) {
    if (text == known.name) {
      return known.control;
    }
  }
  Refuse("'" + text + "' is no flow control: give none, rts-cts or xon-xoff");
}

uint64_t ParseByteCount(const std::string& text) {
  const std::optional<uint64_t> number = ParseNumber<uint64_t>(text);
  if (!number || *number == 0) {
    Refuse("'" + text + "' is no number of bytes: give a number from 1 on");
  }
  return *number;
}

std::string ParseSsid(const std::string& text, bool is_hex) {
  std::string bytes = is_hex ? ParseHexBytes(text) : text;
  if (bytes.empty() || bytes.size() > kLongestSsid) {
    Refuse(Quoted(text) + " is no name of a network: give 1 to 32 bytes");
  }
  return bytes;
}

WifiSecurity ParseSecurity(const std::string& text) {
  const std::optional<WifiSecurity> security = SecurityOf(text);
  if (!security) {
    Refuse("'" + text + "' is no security: give open, wpa2 or unknown");
  }
  return *security;
}

}  // namespace kestrelctl
