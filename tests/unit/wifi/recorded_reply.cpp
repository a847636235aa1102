// SPDX-License-Identifier: Apache-2.0
#include "unit/wifi/recorded_reply.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace kestrel::test {

std::string Recorded(const std::string& name) {
  std::ifstream file(std::string(KESTREL_WIFI_DATA) + '/' + name, std::ios::binary);
  if (!file) {
    throw std::runtime_error("no recorded reply " + name);
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

eastl::string Text(const std::string& text) { return {text.data(), text.size()}; }

std::string Plain(const eastl::string& text) { return {text.data(), text.size()}; }

}  // namespace kestrel::test
