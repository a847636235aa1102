// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_TIMER_H
#define KESTREL_BOARD_HOST_TIMER_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

#include "host/event_loop.h"

namespace kestrel::board {

/// One moment that something waits for; given up when the timer goes. The loop must outlive it.
class Timer {
 public:
  explicit Timer(EventLoop& loop) : loop_(loop) {}
  ~Timer() { Stop(); }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  /// Calls back once, so long from now, in place of what it waited for before. The callback may
  /// start the timer again, and may destroy it.
  void Start(std::chrono::milliseconds delay, std::function<void()> callback) {
    Stop();
    call_ = loop_.CallAfter(delay, [this, callback = std::move(callback)] {
      call_ = 0;
      callback();
    });
  }

  void Stop() { loop_.Cancel(std::exchange(call_, 0)); }

  bool running() const { return call_ != 0; }

 private:
  EventLoop& loop_;
  uint64_t call_ = 0;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_TIMER_H
