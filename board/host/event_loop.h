// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_EVENT_LOOP_H
#define KESTREL_BOARD_HOST_EVENT_LOOP_H

#include <functional>
#include <map>

namespace kestrel::board {

/// Calls back whoever watches a descriptor that can be read or has been hung up. Everything on a
/// board happens in one loop on one thread, so device models need no locks.
class EventLoop {
 public:
  using Callback = std::function<void()>;

  /// Watches a descriptor until Unwatch, both allowed from within callbacks.
  void Watch(int descriptor, Callback callback);
  void Unwatch(int descriptor);

  /// Runs until Stop is called.
  void Run();
  void Stop() { running_ = false; }

 private:
  void Dispatch(int descriptor);

  std::map<int, Callback> callbacks_;
  bool running_ = false;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_EVENT_LOOP_H
