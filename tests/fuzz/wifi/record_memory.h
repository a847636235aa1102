// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_FUZZ_WIFI_RECORD_MEMORY_H
#define KESTREL_TESTS_FUZZ_WIFI_RECORD_MEMORY_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz/support/promise.h"

namespace kestrel::fuzz {

/// What the longest name that fits into a reply may overrun an array of records by. The copy that
/// ends with the array gets no byte too many.
#ifdef KESTREL_BOUND_SSID_COPY
inline constexpr size_t kSlack = 0;
#else
inline constexpr size_t kSlack = 2010;
#endif

/// An array of records on the heap, where the address sanitizer sees its end and that of its slack.
template <typename Record>
class RecordMemory {
 public:
  explicit RecordMemory(size_t count) : count_(count), bytes_(count * sizeof(Record) + kSlack) {}

  Record* records() { return reinterpret_cast<Record*>(bytes_.data()); }

  /// Of the records, the first `filled` are complete and the rest are marked as unused.
  void CheckTags(int filled, uint32_t complete) {
    Promise(filled >= 0 && static_cast<size_t>(filled) <= count_);
    for (size_t i = 0; i < count_; ++i) {
      Promise(records()[i].recordTag == (i < static_cast<size_t>(filled) ? complete : 0));
    }
  }

 private:
  size_t count_;
  std::vector<uint8_t> bytes_;
};

}  // namespace kestrel::fuzz

#endif  // KESTREL_TESTS_FUZZ_WIFI_RECORD_MEMORY_H
