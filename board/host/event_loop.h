// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_EVENT_LOOP_H
#define KESTREL_BOARD_HOST_EVENT_LOOP_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>

namespace kestrel::board {

/// Calls back whoever watches a descriptor that is ready or has been hung up, or waits for a moment
/// that has come. Everything on a board happens in one loop on one thread, so device models need no
/// locks.
class EventLoop {
 public:
  using Callback = std::function<void()>;
  /// Gets the events of poll that have come.
  using EventCallback = std::function<void(short events)>;

  /// Watches a descriptor for something to read until Unwatch, both allowed from within callbacks.
  void Watch(int descriptor, Callback callback);
  /// The same for other events of poll; takes the place of an earlier watch of the descriptor.
  void WatchFor(int descriptor, short events, EventCallback callback);
  void Unwatch(int descriptor);

  /// Calls back once, so long from now. Returns a number for Cancel, which is never 0; both are
  /// allowed from within callbacks. `Timer` cancels by itself.
  uint64_t CallAfter(std::chrono::milliseconds delay, Callback callback);
  void Cancel(uint64_t call) { calls_.erase(call); }

  /// Runs until Stop is called.
  void Run();
  void Stop() { running_ = false; }

 private:
  struct Entry {
    short events;
    EventCallback callback;
  };
  using Clock = std::chrono::steady_clock;
  struct Call {
    Clock::time_point moment;
    Callback callback;
  };
  void Dispatch(int descriptor, short events);
  /// How long poll may wait for descriptors, in milliseconds; -1 for as long as it takes.
  int Timeout() const;
  void MakeDueCalls();

  std::map<int, Entry> watched_;
  std::map<uint64_t, Call> calls_;
  uint64_t last_call_ = 0;
  bool running_ = false;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_EVENT_LOOP_H
