// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_WIFI_RECORD_BYTES_H
#define KESTREL_TESTS_UNIT_WIFI_RECORD_BYTES_H

#include <cstddef>
#include <string>

namespace kestrel::test {

/// The bytes of records, with those between and behind their fields: nothing is to be written
/// there.
template <typename Record>
std::string BytesOf(const Record* records, size_t count = 1) {
  return {reinterpret_cast<const char*>(records), count * sizeof(Record)};
}

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_WIFI_RECORD_BYTES_H
