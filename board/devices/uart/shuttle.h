// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_UART_SHUTTLE_H
#define KESTREL_BOARD_DEVICES_UART_SHUTTLE_H

#include <array>
#include <cstddef>
#include <set>
#include <vector>

#include "host/event_loop.h"

namespace kestrel::board::uart {

/// An end of a wire: bytes come out of it and go into it, and neither waits.
class WireEnd {
 public:
  virtual ~WireEnd() = default;

  /// What tells when bytes can be moved; -1 while nothing will happen at this end.
  virtual int descriptor() const = 0;
  /// Puts bytes that come out into `buffer`; 0 when there are none now.
  virtual size_t Take(char* buffer, size_t size) = 0;
  /// How many of the bytes have gone in.
  virtual size_t Give(const char* data, size_t size) = 0;
  /// So many of the bytes that were taken have gone in at the other end.
  virtual void Arrived(size_t /*count*/) {}
  /// Nobody is there any more. False when the whole wire has been taken away, and its shuttle.
  virtual bool HungUp() = 0;
};

/// Moves bytes along a wire without losing any: it takes more only when all that it took before has
/// gone in at the other end, so that whoever writes too fast has to wait.
class Shuttle {
 public:
  /// One direction of the wire. With no end to go to, bytes vanish.
  struct Lane {
    WireEnd* from;
    WireEnd* to;
    std::array<char, 4096> buffer{};
    size_t begin = 0;
    size_t end = 0;

    bool IsEmpty() const { return begin == end; }
  };

  /// The ends must outlive the shuttle.
  Shuttle(EventLoop& loop, std::vector<Lane> lanes);
  ~Shuttle();
  Shuttle(const Shuttle&) = delete;
  Shuttle& operator=(const Shuttle&) = delete;

  /// Moves what can be moved now. The loop calls for the rest; to be called when an end that had no
  /// descriptor has one.
  void Run();

 private:
  static void MoveAlong(Lane& lane);
  /// Moves all that an end has left which nobody writes to any more, as far as there is room for
  /// it.
  void Drain(const WireEnd& end);
  void Watch();

  EventLoop& loop_;
  std::vector<Lane> lanes_;
  std::set<int> watched_;
};

}  // namespace kestrel::board::uart

#endif  // KESTREL_BOARD_DEVICES_UART_SHUTTLE_H
