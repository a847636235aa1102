// SPDX-License-Identifier: Apache-2.0
#include "host/event_loop.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>
#include <vector>

#include "host/error.h"

namespace kestrel::board {

void EventLoop::Watch(int descriptor, Callback callback) {
  WatchFor(descriptor, POLLIN, [callback = std::move(callback)](short) { callback(); });
}

void EventLoop::WatchFor(int descriptor, short events, EventCallback callback) {
  watched_[descriptor] = {events, std::move(callback)};
}

void EventLoop::Unwatch(int descriptor) { watched_.erase(descriptor); }

void EventLoop::Dispatch(int descriptor, short events) {
  // A callback that ran before may have ended the watch; and one that ends its own must not be
  // destroyed while it runs.
  const auto found = watched_.find(descriptor);
  if (found != watched_.end()) {
    const EventCallback callback = found->second.callback;
    callback(events);
  }
}

uint64_t EventLoop::CallAfter(std::chrono::milliseconds delay, Callback callback) {
  calls_[++last_call_] = {Clock::now() + delay, std::move(callback)};
  return last_call_;
}

int EventLoop::Timeout() const {
  const auto next = std::min_element(
      calls_.begin(), calls_.end(),
      [](const auto& a, const auto& b) { return a.second.moment < b.second.moment; });
  if (next == calls_.end()) {
    return -1;
  }
  const auto rest =
      std::chrono::ceil<std::chrono::milliseconds>(next->second.moment - Clock::now());
  return static_cast<int>(std::clamp<int64_t>(rest.count(), 0, INT_MAX));
}

void EventLoop::MakeDueCalls() {
  std::vector<std::pair<Clock::time_point, uint64_t>> due;
  const Clock::time_point now = Clock::now();
  for (const auto& [number, call] : calls_) {
    if (call.moment <= now) {
      due.emplace_back(call.moment, number);
    }
  }
  std::sort(due.begin(), due.end());
  for (const auto& [moment, number] : due) {
    // One that was made before may have cancelled it.
    const auto found = calls_.find(number);
    if (found != calls_.end() && running_) {
      const Callback callback = std::move(found->second.callback);
      calls_.erase(found);
      callback();
    }
  }
}

void EventLoop::Run() {
  running_ = true;
  while (running_) {
    std::vector<pollfd> watched;
    for (const auto& [descriptor, entry] : watched_) {
      watched.push_back({descriptor, entry.events, 0});
    }
    if (poll(watched.data(), watched.size(), Timeout()) < 0 && errno != EINTR) {
      ThrowErrno("poll");
    }
    for (const pollfd& entry : watched) {
      if (entry.revents != 0 && running_) {
        Dispatch(entry.fd, entry.revents);
      }
    }
    MakeDueCalls();
  }
}

}  // namespace kestrel::board
