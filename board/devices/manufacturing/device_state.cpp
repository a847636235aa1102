// SPDX-License-Identifier: Apache-2.0
#include "devices/manufacturing/device_state.h"

#include <cstring>
#include <random>
#include <vector>

namespace kestrel::board::manufacturing {

DeviceState DeviceStateOf(const std::string& name) {
  // The C++ standard fixes every number that these two give. Whether `char` has a sign it does not.
  const std::vector<uint8_t> characters(name.begin(), name.end());
  std::seed_seq seed(characters.begin(), characters.end());
  std::mt19937 numbers(seed);
  std::array<uint8_t, sizeof(DeviceState)> bytes{};
  for (uint8_t& byte : bytes) {
    byte = static_cast<uint8_t>(numbers() & 0xFF);
  }
  DeviceState state{};
  memcpy(&state, bytes.data(), sizeof state);
  return state;
}

}  // namespace kestrel::board::manufacturing
