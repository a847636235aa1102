// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/serial_settings.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace kestrel::board::uart {
namespace {

using nlohmann::json;

constexpr std::pair<speed_t, int> kSpeeds[] = {{B0, 0},
                                               {B50, 50},
                                               {B75, 75},
                                               {B110, 110},
                                               {B134, 134},
                                               {B150, 150},
                                               {B200, 200},
                                               {B300, 300},
                                               {B600, 600},
                                               {B1200, 1200},
                                               {B1800, 1800},
                                               {B2400, 2400},
                                               {B4800, 4800},
                                               {B9600, 9600},
                                               {B19200, 19200},
                                               {B38400, 38400},
                                               {B57600, 57600},
                                               {B115200, 115200},
                                               {B230400, 230400},
                                               {B460800, 460800},
                                               {B500000, 500000},
                                               {B576000, 576000},
                                               {B921600, 921600},
                                               {B1000000, 1000000},
                                               {B1152000, 1152000},
                                               {B1500000, 1500000},
                                               {B2000000, 2000000},
                                               {B2500000, 2500000},
                                               {B3000000, 3000000},
                                               {B3500000, 3500000},
                                               {B4000000, 4000000}};

/// By name, the bits of a setting: input, output, control and local flags, control characters.
const std::pair<const char*, wire::TerminalBits> kSettings[] = {
    {"speed", {0, 0, CBAUD | CIBAUD, 0, 0}},
    {"data-bits", {0, 0, CSIZE, 0, 0}},
    {"stop-bits", {0, 0, CSTOPB, 0, 0}},
    {"parity", {0, 0, PARENB | PARODD | CMSPAR, 0, 0}},
    {"rts-cts", {0, 0, CRTSCTS, 0, 0}},
    {"xon-xoff", {IXON | IXOFF | IXANY, 0, 0, 0, 1U << VSTART | 1U << VSTOP}},
    {"min-time", {0, 0, 0, 0, 1U << VMIN | 1U << VTIME}},
    {"raw", {ICRNL | INLCR | IGNCR, OPOST, 0, ICANON | ECHO | ISIG | IEXTEN, 0}}};

int Speed(const termios& settings) {
  for (const auto& [code, speed] : kSpeeds) {
    if (cfgetospeed(&settings) == code) {
      return speed;
    }
  }
  return -1;
}

int DataBits(const termios& settings) {
  switch (settings.c_cflag & CSIZE) {
    case CS5:
      return 5;
    case CS6:
      return 6;
    case CS7:
      return 7;
    default:
      return 8;
  }
}

const char* Parity(const termios& settings) {
  if ((settings.c_cflag & PARENB) == 0) {
    return "none";
  }
  return (settings.c_cflag & PARODD) != 0 ? "odd" : "even";
}

std::vector<std::string> FlowControl(const termios& settings) {
  std::vector<std::string> kinds;
  if ((settings.c_cflag & CRTSCTS) != 0) {
    kinds.emplace_back("rts-cts");
  }
  if ((settings.c_iflag & IXON) != 0) {
    kinds.emplace_back("xon");
  }
  if ((settings.c_iflag & IXOFF) != 0) {
    kinds.emplace_back("xoff");
  }
  return kinds;
}

}  // namespace

termios FreshSettings(const termios& fresh_terminal) {
  termios settings = fresh_terminal;
  settings.c_cflag = CS8 | CREAD | HUPCL | CLOCAL;
  cfsetispeed(&settings, B9600);
  cfsetospeed(&settings, B9600);
  return settings;
}

bool AreFresh(const termios& settings) {
  return cfgetospeed(&settings) == B9600 && (settings.c_cflag & (CSTOPB | CRTSCTS)) == 0 &&
         (settings.c_lflag & ICANON) != 0 && (settings.c_iflag & (IXON | IXOFF)) == IXON;
}

json Describe(const termios& settings) {
  return {{"speed", Speed(settings)},
          {"data_bits", DataBits(settings)},
          {"parity", Parity(settings)},
          {"stop_bits", (settings.c_cflag & CSTOPB) != 0 ? 2 : 1},
          {"flow_control", FlowControl(settings)},
          {"raw", (settings.c_lflag & ICANON) == 0}};
}

const std::vector<std::string>& KnownSettings() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> all;
    for (const auto& [name, bits] : kSettings) {
      all.emplace_back(name);
    }
    return all;
  }();
  return names;
}

wire::TerminalBits BitsOf(const SettingNames& names) {
  wire::TerminalBits all;
  for (const auto& [name, bits] : kSettings) {
    if (names.count(name) != 0) {
      all.input |= bits.input;
      all.output |= bits.output;
      all.control |= bits.control;
      all.local |= bits.local;
      all.characters |= bits.characters;
    }
  }
  return all;
}

}  // namespace kestrel::board::uart
