// SPDX-License-Identifier: Apache-2.0
#include "wifi/bssid.h"

#include <vector>

#include "fuzz/support/promise.h"
#include "fuzz/wifi/text.h"

using kestrel::fuzz::Promise;

namespace {

bool LooksLikeAnAddress(std::string_view text) {
  return text.size() == 17 && text[2] == ':' && text[5] == ':' && text[8] == ':' &&
         text[11] == ':' && text[14] == ':';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const eastl::string text = kestrel::fuzz::Reply(data, size);
  std::vector<uint8_t> bssid(6);
  const bool is_accepted = wifi::ParseBssid(text, bssid.data()) == 0;
  Promise(is_accepted == LooksLikeAnAddress(kestrel::fuzz::View(text)));
  return 0;
}
