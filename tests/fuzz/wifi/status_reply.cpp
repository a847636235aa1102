// SPDX-License-Identifier: Apache-2.0
#include "wifi/status_reply.h"

#include "fuzz/support/promise.h"
#include "fuzz/wifi/text.h"
#include "wifi/reply_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using kestrel::fuzz::Promise;
  const eastl::string reply = kestrel::fuzz::Reply(data, size);
  wifi::Network network;
  const bool is_parsed = wifi::ParseStatusReply(network, reply).has_value();
  Promise(is_parsed == (wifi::SplitLines(reply).size() >= 2));
  Promise(network.properties.size() <= 9);
  const eastl::string* const state = network.FindProperty("wpa_state");
  Promise((network.connectionState == wifi::kConnected) ==
          (state != nullptr && *state == "COMPLETED"));
  Promise(network.security >= 0 && network.security <= 2 && !network.idValid);
  return 0;
}
