// SPDX-License-Identifier: Apache-2.0
#include "wifi_actions.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

#include "failure.h"
#include "passphrase_source.h"
#include "ssid.h"
#include "terminal_text.h"
#include "wifi_failure.h"
#include "wifi_library.h"
#include "wifi_scan.h"
#include "wifi_security.h"
#include "wifi_view.h"

namespace kestrelctl {
namespace {

constexpr char kStored[] = "stored networks";

const uint8_t* BytesOf(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

int Finish(const std::string& view) { return Print(view) ? kDone : kFailed; }

/// Where the network has a passphrase, fills it in; false after reporting why not.
bool GetPassphrase(const NetworkToAdd& network, Passphrase& passphrase) {
  switch (network.from) {
    case PassphraseFrom::kFile:
      return ReadPassphrase(network.file, passphrase);
    case PassphraseFrom::kTerminal:
      return AskForPassphrase("passphrase of " + Quoted(network.ssid) + ": ", passphrase);
    case PassphraseFrom::kNowhere:
      break;
  }
  return true;
}

int Store(const std::string& ssid, const Passphrase& passphrase) {
  if (passphrase.size() == 0) {
    return WifiConfig_StoreOpenNetwork(BytesOf(ssid), ssid.size());
  }
  return WifiConfig_StoreWpa2Network(BytesOf(ssid), ssid.size(), passphrase.text(),
                                     passphrase.size());
}

int ReportNotAdded(const std::string& ssid, const LibraryAnswer& answer) {
  return ReportWifiFailure(
      Quoted(ssid), answer,
      {{EEXIST, "a network of that name is stored already; forget it first"},
       {EINVAL, "the Wi-Fi daemon refused; look at 'kestrelctl wifi list' for what it has kept"}});
}

int ReportNotForgotten(const std::string& what, const LibraryAnswer& answer) {
  return ReportWifiFailure(
      what, answer,
      {{ENOENT, "no network of that name is stored"},
       {EINVAL, "the Wi-Fi daemon refused; look at 'kestrelctl wifi list' for what is left"}});
}

bool IsMeant(const WifiStoredNetworkRecord& stored, const NetworkToForget& network) {
  const Ssid ssid = SsidOf(stored);
  return !ssid.is_cut && ssid.bytes == network.ssid &&
         (!network.security || stored.security == *network.security);
}

/// The first of the networks that are meant; nothing after reporting that there is none, or that
/// they differ in their security.
const WifiStoredNetworkRecord* Choose(const std::vector<WifiStoredNetworkRecord>& stored,
                                      const NetworkToForget& network) {
  const WifiStoredNetworkRecord* chosen = nullptr;
  for (const WifiStoredNetworkRecord& candidate : stored) {
    if (!IsMeant(candidate, network)) {
      continue;
    }
    if (chosen != nullptr && chosen->security != candidate.security) {
      ReportProblem(Quoted(network.ssid) + ": stored both " + SecurityName(chosen->security) +
                    " and " + SecurityName(candidate.security) + ": choose with --security");
      return nullptr;
    }
    chosen = chosen == nullptr ? &candidate : chosen;
  }
  if (chosen == nullptr) {
    ReportNotForgotten(Quoted(network.ssid), {-1, ENOENT, ""});
  }
  return chosen;
}

/// Whether the person at the terminal wants that.
bool Confirm(const std::string& question) {
  fputs((question + " [y/N] ").c_str(), stderr);
  std::array<char, 16> line{};
  if (fgets(line.data(), line.size(), stdin) == nullptr) {
    fputs("\n", stderr);
    return false;
  }
  const std::string answer = line.data();
  return answer == "y\n" || answer == "Y\n" || answer == "yes\n";
}

}  // namespace

int ScanForNetworks(Milliseconds wait, Format format) {
  std::optional<ScannedNetworks> networks = wait.count() > 0 ? ScanFreshly(wait) : Scan();
  if (!networks) {
    return kFailed;
  }
  std::stable_sort(networks->begin(), networks->end(),
                   [](const WifiScannedNetworkRecord& one, const WifiScannedNetworkRecord& other) {
                     return one.signalDbm > other.signalDbm;
                   });
  return Finish(ViewOf(*networks, format));
}

int ListNetworks(Format format) {
  const StoredNetworks stored = ReadStoredNetworks();
  if (stored.answer.value < 0) {
    return ReportWifiFailure(kStored, stored.answer);
  }
  return Finish(ViewOf(stored.records, format));
}

int TellCurrentNetwork(Format format) {
  const CurrentNetwork current = ReadCurrentNetwork();
  if (current.answer.value == 0) {
    return Print(ViewOf(current.record, format)) ? kDone : kNoAnswer;
  }
  if (current.answer.error == ENODATA) {
    return Print(ViewOfNoCurrentNetwork(format)) ? kFailed : kNoAnswer;
  }
  ReportWifiFailure("current network", current.answer,
                    {{EINVAL, "the Wi-Fi daemon refused, or tells no access point's address"},
                     {ERANGE, "the Wi-Fi daemon tells no frequency"}});
  return kNoAnswer;
}

int AddNetwork(const NetworkToAdd& network, Format format) {
  Passphrase passphrase;
  if (!GetPassphrase(network, passphrase)) {
    return kFailed;
  }
  const LibraryAnswer answer = AskLibrary([&] { return Store(network.ssid, passphrase); });
  if (answer.value != 0) {
    return ReportNotAdded(network.ssid, answer);
  }
  const WifiSecurity security = passphrase.size() == 0 ? WifiSecurity_Open : WifiSecurity_Wpa2Psk;
  return Finish(ViewOfAdded(network.ssid, security, format));
}

int ForgetNetwork(const NetworkToForget& network, Format format) {
  const StoredNetworks stored = ReadStoredNetworks();
  if (stored.answer.value < 0) {
    return ReportWifiFailure(kStored, stored.answer);
  }
  const WifiStoredNetworkRecord* const chosen = Choose(stored.records, network);
  if (chosen == nullptr) {
    return kFailed;
  }
  const LibraryAnswer answer = AskLibrary([&] { return z__WifiConfig_ForgetNetwork(chosen); });
  return answer.value == 0 ? Finish(ViewOfForgotten(1, format))
                           : ReportNotForgotten(Quoted(network.ssid), answer);
}

int ForgetAllNetworks(bool asks_first, Format format) {
  const LibraryAnswer count = AskLibrary(WifiConfig_GetStoredNetworkCount);
  if (count.value < 0) {
    return ReportWifiFailure(kStored, count);
  }
  if (count.value > 0 && asks_first &&
      !Confirm("Forget all " + std::to_string(count.value) + " stored networks?")) {
    return ReportProblem("nothing has been forgotten");
  }
  const LibraryAnswer answer = AskLibrary(WifiConfig_ForgetAllNetworks);
  return answer.value == 0 ? Finish(ViewOfForgotten(count.value, format))
                           : ReportNotForgotten(kStored, answer);
}

}  // namespace kestrelctl
