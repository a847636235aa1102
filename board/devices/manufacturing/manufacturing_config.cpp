// SPDX-License-Identifier: Apache-2.0
#include "devices/manufacturing/manufacturing_config.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "host/hex_text.h"

namespace kestrel::board::manufacturing {
namespace {

constexpr char kIdentifierKey[] = "device-id";

void ReadIdentifier(ConfigReader& reader, DeviceState& state) {
  const std::string digits = reader.Text(kIdentifierKey, ToHex(state.identifier));
  const std::optional<std::vector<uint8_t>> bytes = FromHex(digits);
  if (!bytes.has_value() || bytes->size() != state.identifier.size()) {
    reader.Refuse(kIdentifierKey, "an identifier is 128 hexadecimal digits");
  }
  std::copy(bytes->begin(), bytes->end(), state.identifier.begin());
}

}  // namespace

ManufacturingConfig ReadManufacturingConfig(ConfigReader& reader, const std::string& board) {
  ManufacturingConfig config;
  config.warden_present = reader.Boolean("warden", true);
  config.lodestone_present = reader.Boolean("lodestone", true);
  config.state = DeviceStateOf(board);
  ReadIdentifier(reader, config.state);
  reader.RefuseUnknownKeys();
  return config;
}

}  // namespace kestrel::board::manufacturing
