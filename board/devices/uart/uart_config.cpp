// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/uart_config.h"

#include <algorithm>
#include <string>
#include <vector>

#include "host/text.h"

namespace kestrel::board::uart {
namespace {

constexpr int64_t kHighestNumber = 255;
constexpr int kDefaultPorts = 4;

std::string Called(int64_t number) { return "port " + std::to_string(number); }

UartConfig ReadPorts(ConfigReader& reader) {
  UartConfig ports;
  if (!reader.Has("ports")) {
    for (int number = 0; number < kDefaultPorts; ++number) {
      ports[number] = {};
    }
    return ports;
  }
  for (const ConfigInteger& number : reader.Integers("ports", 0, kHighestNumber)) {
    if (!ports.emplace(number.value, PortConfig()).second) {
      throw ConfigError(number.line,
                        "'uart.ports': " + Called(number.value) + " stands here twice");
    }
  }
  return ports;
}

/// The port of that number, for `key`.
PortConfig& Find(UartConfig& ports, int64_t number, const ConfigReader& reader,
                 const std::string& key) {
  const auto found = ports.find(static_cast<int>(number));
  if (found == ports.end()) {
    reader.Refuse(key, "the board has no " + Called(number));
  }
  return found->second;
}

void Join(UartConfig& ports, int64_t from, int64_t to, const ConfigReader& reader,
          const std::string& key) {
  PortConfig& port = Find(ports, from, reader, key);
  if (port.other_end.has_value()) {
    reader.Refuse(key, Called(from) + " has something at the other end of its wire already");
  }
  port.other_end = static_cast<int>(to);
}

void ReadCable(ConfigReader& reader, UartConfig& ports) {
  const std::vector<ConfigInteger> ends = reader.Integers("between", 0, kHighestNumber);
  if (ends.size() != 2 || ends[0].value == ends[1].value) {
    reader.Refuse("between", "a cable joins two ports, such as [0, 1]");
  }
  Join(ports, ends[0].value, ends[1].value, reader, "between");
  Join(ports, ends[1].value, ends[0].value, reader, "between");
  reader.RefuseUnknownKeys();
}

SettingNames ReadForgotten(ConfigReader& reader) {
  SettingNames names;
  for (const ConfigText& name : reader.Texts("forget")) {
    const std::vector<std::string>& known = KnownSettings();
    if (std::find(known.begin(), known.end(), name.text) == known.end()) {
      throw ConfigError(name.line, "'uart.port.forget': no setting is called '" + name.text +
                                       "' (known: " + board::Join(known) + ")");
    }
    names.insert(name.text);
  }
  return names;
}

void ReadPort(ConfigReader& reader, UartConfig& ports, std::set<int64_t>& seen) {
  const int64_t number = reader.RequiredInteger("number", 0, kHighestNumber);
  if (!seen.insert(number).second) {
    reader.Refuse("number", Called(number) + " is described twice");
  }
  Find(ports, number, reader, "number").forgotten = ReadForgotten(reader);
  if (reader.Boolean("loopback", false)) {
    Join(ports, number, number, reader, "loopback");
  }
  reader.RefuseUnknownKeys();
}

}  // namespace

UartConfig ReadUartConfig(ConfigReader& reader) {
  UartConfig ports = ReadPorts(reader);
  for (ConfigReader& cable : reader.Tables("cable")) {
    ReadCable(cable, ports);
  }
  std::set<int64_t> seen;
  for (ConfigReader& port : reader.Tables("port")) {
    ReadPort(port, ports, seen);
  }
  reader.RefuseUnknownKeys();
  return ports;
}

}  // namespace kestrel::board::uart
