// SPDX-License-Identifier: Apache-2.0
#include "wifi/ssid.h"

#include <algorithm>

#include "fuzz/support/input.h"
#include "fuzz/support/promise.h"
#include "fuzz/wifi/text.h"

namespace kestrel::fuzz {
namespace {

void CheckEscaping(const eastl::string& name) {
  const std::string_view bytes = View(name);
  const auto quotes = static_cast<size_t>(std::count(bytes.begin(), bytes.end(), '"'));
  const eastl::string escaped = wifi::EscapeQuotes(name);
  Promise(escaped.size() == name.size() + 3 * quotes);
  Promise(View(escaped).find('"') == std::string_view::npos);
  Promise(wifi::IsPrintable(escaped) == wifi::IsPrintable(name));
}

}  // namespace
}  // namespace kestrel::fuzz

/// A name to look for, then the names of the networks to look through.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using kestrel::fuzz::Promise;
  kestrel::fuzz::Input input(data, size);
  const eastl::string wanted = kestrel::fuzz::Text(input.TakeSection());
  wifi::NetworkList networks;
  bool is_there = false;
  while (!input.AtEnd()) {
    const eastl::string name = kestrel::fuzz::Text(input.TakeSection());
    networks.emplace_back().SetProperty("ssid", name);
    is_there = is_there || name == wanted;
  }
  kestrel::fuzz::CheckEscaping(wanted);
  Promise(wifi::FindNetworkBySsid(networks, wanted).has_value() ==
          (is_there && wifi::IsValidSsid(wanted)));
  return 0;
}
