// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_IPC_CLIENT_H
#define KESTREL_WIFI_IPC_CLIENT_H

#include <stdint.h>

#include <atomic>
#include <nwl/mutex>

namespace vestaipc {

/// A connection to a local service, shared by all who talk to it. Whoever writes a request and
/// reads its reply holds `mutex` meanwhile.
class IpcClient {
 public:
  IpcClient() = default;
  ~IpcClient() { Close(); }
  IpcClient(const IpcClient&) = delete;
  IpcClient& operator=(const IpcClient&) = delete;

  void Close() { Adopt(-1); }

  /// Takes over a descriptor, or -1 for none, and closes the one it had.
  void Adopt(int32_t new_fd);

  // Read without the lock by every request, hence atomic.
  std::atomic<int32_t> fd{-1};  ///< -1 while there is no connection
  nwl::Mutex mutex;
};

}  // namespace vestaipc

#endif  // KESTREL_WIFI_IPC_CLIENT_H
