// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/supplicant.h"

#include <algorithm>
#include <utility>

namespace kestrel::board::wifi {
namespace {

/// Protected networks come first, and the strongest first among them.
bool IsListedBefore(const AccessPoint& one, const AccessPoint& other) {
  return std::make_pair(!one.security->IsOpen(), one.signal) >
         std::make_pair(!other.security->IsOpen(), other.signal);
}

}  // namespace

Supplicant::Supplicant(EventLoop& loop, const Durations& durations, Air& air, NetworkStore& store)
    : loop_(loop),
      durations_(durations),
      air_(air),
      store_(store),
      scan_timer_(loop),
      link_timer_(loop) {
  air_.SetListener([this] { AirChanged(); });
  Begin();
}

void Supplicant::Begin() {
  if (!store_.networks().empty()) {
    Reconsider();
  }
}

bool Supplicant::StartScan() {
  if (scanning() || state_ == State::kAuthenticating) {
    return false;
  }
  scan_timer_.Start(durations_.scan, [this] { EndScan(); });
  return true;
}

void Supplicant::EndScan() {
  scan_results_ = air_.points();
  std::stable_sort(scan_results_.begin(), scan_results_.end(), IsListedBefore);
}

std::string Supplicant::StateName() const {
  switch (state_) {
    case State::kAuthenticating:
      return "AUTHENTICATING";
    case State::kCompleted:
      return "COMPLETED";
    case State::kSearching:
      return "SCANNING";
    case State::kDisconnected:
    case State::kInactive:
      break;
  }
  if (scanning()) {
    return "SCANNING";
  }
  return state_ == State::kInactive ? "INACTIVE" : "DISCONNECTED";
}

void Supplicant::Enable(StoredNetwork& network) {
  network.SetDisabled(false);
  pauses_.erase(network.id());
  Reconsider();
}

void Supplicant::Disable(StoredNetwork& network) {
  network.SetDisabled(true);
  pauses_.erase(network.id());
  if (current_ == network.id()) {
    Leave();
  } else {
    Reconsider();
  }
}

void Supplicant::Select(StoredNetwork& network) {
  for (StoredNetwork& other : store_.networks()) {
    other.SetDisabled(other.id() != network.id());
  }
  held_ = false;
  if (current_ != network.id()) {
    current_ = -1;
  }
  Enable(network);
}

void Supplicant::Remove(int id) {
  store_.Remove(id);
  pauses_.erase(id);
  if (current_ == id) {
    Leave();
  } else {
    Reconsider();
  }
}

void Supplicant::Changed(const StoredNetwork& network) {
  pauses_.erase(network.id());
  Reconsider();
}

void Supplicant::Disconnect() {
  held_ = true;
  Leave();
}

void Supplicant::Reconnect() {
  held_ = false;
  Reconsider();
}

void Supplicant::Reload() {
  store_.Load();
  pauses_.clear();
  Leave();
}

void Supplicant::Restart() {
  store_.Load();
  scan_timer_.Stop();
  link_timer_.Stop();
  scan_results_.clear();
  pauses_.clear();
  state_ = State::kDisconnected;
  current_ = -1;
  held_ = false;
  Begin();
}

void Supplicant::AirChanged() {
  const AccessPoint* point = current_ < 0 ? nullptr : air_.FindByBssid(partner_.bssid);
  if (current_ >= 0 && (point == nullptr || point->name != partner_.name)) {
    Leave();
  } else if (!store_.networks().empty()) {
    Reconsider();
  }
}

void Supplicant::Reconsider() {
  if (current_ >= 0) {
    return;
  }
  const Candidate candidate = FindCandidate();
  if (candidate.network != nullptr) {
    BeginAssociation(candidate);
    return;
  }
  link_timer_.Stop();
  state_ = StateWithoutCandidate();
}

Supplicant::State Supplicant::StateWithoutCandidate() const {
  if (held_) {
    return State::kDisconnected;
  }
  bool enabled = false;
  for (const StoredNetwork& network : store_.networks()) {
    if (!network.disabled() && !IsPaused(network.id())) {
      return State::kSearching;
    }
    enabled = enabled || !network.disabled();
  }
  return enabled ? State::kDisconnected : State::kInactive;
}

Supplicant::Candidate Supplicant::FindCandidate() const {
  Candidate best;
  for (const StoredNetwork& network : store_.networks()) {
    const bool wanted = !held_ && !network.disabled() && !IsPaused(network.id()) &&
                        (best.network == nullptr || network.priority() > best.network->priority());
    const AccessPoint* strongest = nullptr;
    for (const AccessPoint& point : air_.points()) {
      if (network.Matches(point) && (strongest == nullptr || point.signal > strongest->signal)) {
        strongest = &point;
      }
    }
    if (wanted && strongest != nullptr) {
      best = {&network, strongest};
    }
  }
  return best;
}

void Supplicant::BeginAssociation(const Candidate& candidate) {
  current_ = candidate.network->id();
  partner_ = *candidate.point;
  state_ = State::kAuthenticating;
  link_timer_.Start(durations_.association, [this] { EndAssociation(); });
}

void Supplicant::EndAssociation() {
  if (store_.Find(current_)->OpensWith(partner_)) {
    state_ = State::kCompleted;
    has_address_ = true;
    return;
  }
  Pause(std::exchange(current_, -1));
  Reconsider();
}

void Supplicant::Leave() {
  current_ = -1;
  state_ = State::kDisconnected;
  link_timer_.Start(durations_.association, [this] { Reconsider(); });
}

void Supplicant::Pause(int id) {
  auto timer = std::make_unique<Timer>(loop_);
  timer->Start(durations_.retry, [this, id] {
    pauses_.erase(id);
    Reconsider();
  });
  pauses_[id] = std::move(timer);
}

}  // namespace kestrel::board::wifi
