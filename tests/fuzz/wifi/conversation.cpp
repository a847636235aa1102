// SPDX-License-Identifier: Apache-2.0
// Calls of the exported functions in any order, with any arguments and any replies.
#include <kestrel/wificonfig.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "fuzz/support/input.h"
#include "fuzz/support/promise.h"
#include "fuzz/wifi/daemon.h"
#include "fuzz/wifi/record_memory.h"
#include "wifi/wifi_context.h"

namespace kestrel::fuzz {
namespace {

/// What follows the letter of a call in its section, one byte an argument.
using Arguments = std::string;

std::optional<uint8_t> ByteAt(const Arguments& arguments, size_t position) {
  return position < arguments.size()
             ? std::optional<uint8_t>(static_cast<unsigned char>(arguments[position]))
             : std::nullopt;
}

/// The version that an application passes: the right one, unless the input has a byte for it.
uint32_t VersionAt(const Arguments& arguments, size_t position) {
  return ByteAt(arguments, position).value_or(WifiConfig_StructVersion);
}

/// Every function fails with -1 and an errno, or gives a number.
int Checked(int result) {
  Promise(result >= 0 || (result == -1 && errno != 0));
  return result;
}

void TriggerScan(const Arguments& /*arguments*/, Input& /*input*/) {
  Promise(Checked(WifiConfig_TriggerScanAndGetScannedNetworkCount()) <= 100);
}

void CountStored(const Arguments& /*arguments*/, Input& /*input*/) {
  Checked(WifiConfig_GetStoredNetworkCount());
}

/// The arguments are the number of records, without which the array is null, and a version.
template <typename Record>
void Get(int (*get)(Record*, size_t, uint32_t), uint32_t complete, const Arguments& arguments) {
  const std::optional<uint8_t> count = ByteAt(arguments, 0);
  RecordMemory<Record> memory(count.value_or(1));
  const int filled =
      Checked(get(count ? memory.records() : nullptr, count.value_or(1), VersionAt(arguments, 1)));
  if (filled >= 0) {
    memory.CheckTags(filled, complete);
  }
}

void GetScanned(const Arguments& arguments, Input& /*input*/) {
  Get(z__WifiConfig_GetScannedNetworks, WifiScannedNetworkRecord_Complete, arguments);
}

void GetStored(const Arguments& arguments, Input& /*input*/) {
  Get(z__WifiConfig_GetStoredNetworks, WifiStoredNetworkRecord_Complete, arguments);
}

void GetCurrent(const Arguments& arguments, Input& /*input*/) {
  RecordMemory<WifiCurrentNetworkRecord> memory(1);
  const uint32_t version = VersionAt(arguments, 0);
  if (Checked(z__WifiConfig_GetCurrentNetwork(memory.records(), version)) == 0) {
    memory.CheckTags(1, WifiCurrentNetworkRecord_Complete);
  }
}

/// A name in memory of its own length, or none where the input ends.
std::unique_ptr<uint8_t[]> TakeName(Input& input, size_t* length) {
  if (input.AtEnd()) {
    *length = 0;
    return nullptr;
  }
  const std::string name = input.TakeSection();
  *length = name.size();
  auto bytes = std::make_unique<uint8_t[]>(name.size());
  memcpy(bytes.get(), name.data(), name.size());
  return bytes;
}

/// The argument is the length that is told for the passphrase, or else its own is.
void StoreWpa2(const Arguments& arguments, Input& input) {
  size_t length = 0;
  const std::unique_ptr<uint8_t[]> name = TakeName(input, &length);
  const bool has_passphrase = !input.AtEnd();
  const std::string passphrase = input.TakeSection();
  Checked(WifiConfig_StoreWpa2Network(name.get(), length,
                                      has_passphrase ? passphrase.c_str() : nullptr,
                                      ByteAt(arguments, 0).value_or(passphrase.size())));
}

void StoreOpen(const Arguments& /*arguments*/, Input& input) {
  size_t length = 0;
  const std::unique_ptr<uint8_t[]> name = TakeName(input, &length);
  Checked(WifiConfig_StoreOpenNetwork(name.get(), length));
}

/// The arguments are the security as a digit, without which the record is null, and the lowest byte
/// of the tag.
void Forget(const Arguments& arguments, Input& input) {
  if (arguments.empty()) {
    Checked(z__WifiConfig_ForgetNetwork(nullptr));
    return;
  }
  // What a length of 255 reaches behind the record.
  constexpr size_t kReach = 219;
  std::vector<uint8_t> bytes(sizeof(WifiStoredNetworkRecord) + kReach);
  auto* const record = reinterpret_cast<WifiStoredNetworkRecord*>(bytes.data());
  const std::string name = input.TakeSection().substr(0, UINT8_MAX);
  memcpy(bytes.data() + offsetof(WifiStoredNetworkRecord, ssid), name.data(), name.size());
  record->recordTag = (WifiStoredNetworkRecord_Complete & ~UINT32_C(0xFF)) |
                      ByteAt(arguments, 1).value_or(WifiStoredNetworkRecord_Complete & 0xFF);
  record->ssidLength = static_cast<uint8_t>(name.size());
  record->security = static_cast<WifiSecurity>(arguments[0] - '0');
  Checked(z__WifiConfig_ForgetNetwork(record));
}

void ForgetAll(const Arguments& /*arguments*/, Input& /*input*/) {
  Checked(WifiConfig_ForgetAllNetworks());
}

struct Call {
  char letter;
  void (*make)(const Arguments& arguments, Input& input);
};

constexpr Call kCalls[] = {
    {'s', TriggerScan}, {'g', GetScanned}, {'l', CountStored}, {'r', GetStored}, {'c', GetCurrent},
    {'w', StoreWpa2},   {'o', StoreOpen},  {'f', Forget},      {'a', ForgetAll},
};

void MakeCall(Input& input) {
  const std::string section = input.TakeSection();
  for (const Call& call : kCalls) {
    if (ByteAt(section, 0) == call.letter) {
      errno = 0;
      call.make(section.substr(1), input);
    }
  }
}

void Converse(wifi::WifiContext& context, Input& input) {
  Daemon daemon(input);
  // All that is kept from call to call, as a process finds it.
  context.client =
      std::make_unique<wifi::WifiControlClient>(eastl::shared_ptr<vestaipc::IpcClient>());
  context.scannedNetworks = eastl::make_shared<wifi::NetworkList>();
  context.storedNetworks = eastl::make_shared<wifi::NetworkList>();
  while (!input.AtEnd()) {
    MakeCall(input);
  }
  context.client.reset();
}

}  // namespace
}  // namespace kestrel::fuzz

/// Sections in the order in which they are needed: a call, its texts, the replies to its commands,
/// the next call.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kestrel::fuzz::Input input(data, size);
  kestrel::fuzz::Converse(wifi::GetWifiContext(), input);
  return 0;
}
