// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_WIFI_RECORDED_REPLY_H
#define KESTREL_TESTS_UNIT_WIFI_RECORDED_REPLY_H

#include <EASTL/string.h>

#include <string>

namespace kestrel::test {

/// The bytes of a file in tests/data/wifi: one reply, as a real supplicant sent it.
std::string Recorded(const std::string& name);

/// `text` as the library takes it, NUL bytes included.
eastl::string Text(const std::string& text);

/// `text` as tests compare it, NUL bytes included.
std::string Plain(const eastl::string& text);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_WIFI_RECORDED_REPLY_H
