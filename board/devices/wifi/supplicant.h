// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_SUPPLICANT_H
#define KESTREL_BOARD_DEVICES_WIFI_SUPPLICANT_H

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devices/wifi/access_point.h"
#include "devices/wifi/network_store.h"
#include "host/timer.h"

namespace kestrel::board::wifi {

/// How long what the daemon does takes.
struct Durations {
  std::chrono::milliseconds scan{1000};
  std::chrono::milliseconds association{300};
  std::chrono::milliseconds retry{10000};  ///< how long a network with a wrong key stays disabled
};

/// What the daemon does by itself: it scans when it is told to, and joins one of the stored
/// networks that are enabled and can be heard.
class Supplicant {
 public:
  /// All must outlive it.
  Supplicant(EventLoop& loop, const Durations& durations, Air& air, NetworkStore& store);

  /// False while it scans or joins a network.
  bool StartScan();
  /// What the last scan that has ended found.
  const std::vector<AccessPoint>& scan_results() const { return scan_results_; }
  bool scanning() const { return scan_timer_.running(); }

  /// The daemon's word for what it is doing, such as COMPLETED.
  std::string StateName() const;
  /// The network that it is on or joins; -1 when there is none.
  int current() const { return current_; }
  /// The access point that it is connected to, or null.
  const AccessPoint* connection() const {
    return state_ == State::kCompleted ? &partner_ : nullptr;
  }
  /// Whether it has had an address of its own since the board was started.
  bool has_address() const { return has_address_; }
  bool IsPaused(int id) const { return pauses_.count(id) != 0; }

  void Enable(StoredNetwork& network);
  void Disable(StoredNetwork& network);
  /// Enables this network and disables all others.
  void Select(StoredNetwork& network);
  void Remove(int id);
  /// A variable of the network has been changed.
  void Changed(const StoredNetwork& network);
  /// Stays away from all networks until Reconnect.
  void Disconnect();
  void Reconnect();
  /// Reads the stored networks anew. Throws UsageError.
  void Reload();
  /// Becomes a daemon that has just been started: it knows what has been saved, and nothing else.
  /// The address stays, which is not its own but the interface's. Throws UsageError.
  void Restart();

 private:
  enum class State { kDisconnected, kInactive, kSearching, kAuthenticating, kCompleted };
  struct Candidate {
    const StoredNetwork* network = nullptr;
    const AccessPoint* point = nullptr;
  };

  void Begin();
  void EndScan();
  void AirChanged();
  /// Looks for a network to join unless it has one.
  void Reconsider();
  State StateWithoutCandidate() const;
  Candidate FindCandidate() const;
  void BeginAssociation(const Candidate& candidate);
  void EndAssociation();
  /// Leaves the network, and looks for another one after a moment.
  void Leave();
  void Pause(int id);

  EventLoop& loop_;
  Durations durations_;
  Air& air_;
  NetworkStore& store_;
  std::vector<AccessPoint> scan_results_;
  State state_ = State::kDisconnected;
  int current_ = -1;
  AccessPoint partner_;
  bool held_ = false;
  bool has_address_ = false;
  Timer scan_timer_;
  Timer link_timer_;
  std::map<int, std::unique_ptr<Timer>> pauses_;
};

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_SUPPLICANT_H
