// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_FUZZ_WIFI_TEXT_H
#define KESTREL_TESTS_FUZZ_WIFI_TEXT_H

#include <EASTL/string.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "wifi/control_client.h"

namespace kestrel::fuzz {

/// `text` as the library takes it.
inline eastl::string Text(std::string_view text) { return {text.data(), text.size()}; }

/// An input as a reply, of which the library never sees more than what its buffer holds.
inline eastl::string Reply(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), std::min(size, wifi::kReplyBufferSize)};
}

inline std::string_view View(const eastl::string& text) { return {text.data(), text.size()}; }

}  // namespace kestrel::fuzz

#endif  // KESTREL_TESTS_FUZZ_WIFI_TEXT_H
