// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/shuttle.h"

#include <poll.h>

#include <map>
#include <utility>

namespace kestrel::board::uart {
namespace {

/// How often one wire may go on before others have their turn.
constexpr int kRounds = 16;

/// Moves one bufferful or a part of it. False when nothing can be moved.
bool MoveSome(Shuttle::Lane& lane) {
  if (lane.IsEmpty()) {
    lane.begin = 0;
    lane.end = lane.from->Take(lane.buffer.data(), lane.buffer.size());
  }
  const size_t size = lane.end - lane.begin;
  if (size == 0) {
    return false;
  }
  const size_t gone =
      lane.to == nullptr ? size : lane.to->Give(lane.buffer.data() + lane.begin, size);
  lane.begin += gone;
  lane.from->Arrived(gone);
  return gone > 0;
}

}  // namespace

Shuttle::Shuttle(EventLoop& loop, std::vector<Lane> lanes) : loop_(loop), lanes_(std::move(lanes)) {
  Run();
}

Shuttle::~Shuttle() {
  for (const int descriptor : watched_) {
    loop_.Unwatch(descriptor);
  }
}

void Shuttle::MoveAlong(Lane& lane) {
  // An end without a descriptor calls for nothing, so it must be emptied now.
  for (int i = 0; (i < kRounds || lane.from->descriptor() < 0) && MoveSome(lane); ++i) {
  }
}

void Shuttle::Drain(const WireEnd& end) {
  for (Lane& lane : lanes_) {
    while (lane.from == &end && MoveSome(lane)) {
    }
  }
}

void Shuttle::Run() {
  for (Lane& lane : lanes_) {
    MoveAlong(lane);
  }
  Watch();
}

void Shuttle::Watch() {
  std::map<WireEnd*, int> events;
  for (const Lane& lane : lanes_) {
    events[lane.from] |= lane.IsEmpty() ? POLLIN : 0;
    if (lane.to != nullptr) {
      events[lane.to] |= lane.IsEmpty() ? 0 : POLLOUT;
    }
  }
  for (const int descriptor : std::exchange(watched_, {})) {
    loop_.Unwatch(descriptor);
  }
  for (const auto& [end, wanted] : events) {
    const int descriptor = end->descriptor();
    if (descriptor < 0) {
      continue;
    }
    watched_.insert(descriptor);
    loop_.WatchFor(descriptor, static_cast<short>(wanted), [this, end = end](short happened) {
      if ((happened & (POLLHUP | POLLERR)) == 0) {
        return Run();
      }
      // What was sent last may still lie there.
      Drain(*end);
      if (end->HungUp()) {
        Run();
      }
    });
  }
}

}  // namespace kestrel::board::uart
