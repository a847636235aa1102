// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_RECORD_ARRAY_H
#define KESTREL_WIFI_RECORD_ARRAY_H

#include <stddef.h>

#include "wifi/network.h"

namespace wifi {

/// Copies the first networks of a list, as many as the array has records, and returns how many
/// records are complete. `fill(network, array_end, record)` returns whether the network could be
/// copied; the slot of one that could not is used again for the next, so that complete records come
/// first, which callers count on. Of the slots that are left, the tag alone is cleared.
template <typename Record>
int FillRecords(const NetworkList& networks, Record* records, size_t count,
                bool (*fill)(const Network&, const void*, Record&)) {
  const size_t looked_at = networks.size() < count ? networks.size() : count;
  size_t filled = 0;
  for (size_t i = 0; i < looked_at; ++i) {
    filled += fill(networks[i], records + count, records[filled]) ? 1 : 0;
  }
  for (size_t i = filled; i < count; ++i) {
    records[i].recordTag = 0;
  }
  return static_cast<int>(filled);
}

}  // namespace wifi

#endif  // KESTREL_WIFI_RECORD_ARRAY_H
