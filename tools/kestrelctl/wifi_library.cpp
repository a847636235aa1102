// SPDX-License-Identifier: Apache-2.0
#include "wifi_library.h"

#include <algorithm>
#include <cstddef>

namespace kestrelctl {
namespace {

/// The library reads no longer replies, so no name can run on for more bytes than these.
constexpr size_t kLongestReply = 2048;

/// `count` records with slack behind them.
template <typename Record>
std::vector<Record> RecordsWithSlack(size_t count) {
  return std::vector<Record>(count + kLongestReply / sizeof(Record) + 1);
}

template <typename Record, typename Read>
std::vector<Record> ReadRecords(int count, const Read& read) {
  if (count <= 0) {
    return {};
  }
  const auto wanted = static_cast<size_t>(count);
  std::vector<Record> records = RecordsWithSlack<Record>(wanted);
  const int filled = CallLibrary([&] { return read(records.data(), wanted); });
  records.resize(static_cast<size_t>(std::max(filled, 0)));
  return records;
}

}  // namespace

std::vector<WifiScannedNetworkRecord> ReadScannedNetworks(int count) {
  return ReadRecords<WifiScannedNetworkRecord>(
      count, [](WifiScannedNetworkRecord* records, size_t wanted) {
        return z__WifiConfig_GetScannedNetworks(records, wanted, WifiConfig_StructVersion);
      });
}

StoredNetworks ReadStoredNetworks() {
  StoredNetworks networks;
  networks.answer = AskLibrary(WifiConfig_GetStoredNetworkCount);
  networks.records = ReadRecords<WifiStoredNetworkRecord>(
      networks.answer.value, [](WifiStoredNetworkRecord* records, size_t wanted) {
        return z__WifiConfig_GetStoredNetworks(records, wanted, WifiConfig_StructVersion);
      });
  return networks;
}

CurrentNetwork ReadCurrentNetwork() {
  auto records = RecordsWithSlack<WifiCurrentNetworkRecord>(1);
  const LibraryAnswer answer = AskLibrary(
      [&] { return z__WifiConfig_GetCurrentNetwork(records.data(), WifiConfig_StructVersion); });
  return {answer, records.front()};
}

}  // namespace kestrelctl
