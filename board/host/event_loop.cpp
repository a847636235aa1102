// SPDX-License-Identifier: Apache-2.0
#include "host/event_loop.h"

#include <poll.h>

#include <cerrno>
#include <vector>

#include "host/error.h"

namespace kestrel::board {

void EventLoop::Watch(int descriptor, Callback callback) {
  callbacks_[descriptor] = std::move(callback);
}

void EventLoop::Unwatch(int descriptor) { callbacks_.erase(descriptor); }

void EventLoop::Dispatch(int descriptor) {
  // A callback that ran before may have ended the watch; and one that ends its own must not be
  // destroyed while it runs.
  const auto found = callbacks_.find(descriptor);
  if (found != callbacks_.end()) {
    const Callback callback = found->second;
    callback();
  }
}

void EventLoop::Run() {
  running_ = true;
  while (running_) {
    std::vector<pollfd> watched;
    for (const auto& [descriptor, callback] : callbacks_) {
      watched.push_back({descriptor, POLLIN, 0});
    }
    if (poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR) {
      ThrowErrno("poll");
    }
    for (const pollfd& entry : watched) {
      if (entry.revents != 0 && running_) {
        Dispatch(entry.fd);
      }
    }
  }
}

}  // namespace kestrel::board
