// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_CONTROL_CLIENT_H
#define KESTREL_WIFI_CONTROL_CLIENT_H

#include <EASTL/shared_ptr.h>
#include <EASTL/string.h>
#include <stddef.h>
#include <time.h>

#include <nwl/expected>

#include "wifi/ipc_client.h"

namespace wifi {

inline constexpr char kControlSocketPath[] = "/var/volatile/tmp/wlan0_request_socket";
inline constexpr size_t kReplyBufferSize = 2048;
inline constexpr time_t kReplyTimeoutSeconds = 30;

/// Sends commands to the Wi-Fi daemon.
///
/// The connection is made at construction or never, and a failed exchange closes it for good:
/// a reply that comes too late would otherwise be taken for that of the next command, and
/// applications count on EIO from then on rather than on a daemon that has forgotten them.
class WifiControlClient {
 public:
  /// Shares `given`, or makes a connection of its own when it is empty. Connects if there is no
  /// descriptor yet.
  explicit WifiControlClient(eastl::shared_ptr<vestaipc::IpcClient> given);

  /// Sends one command and waits for its reply, which is given as received, at most
  /// kReplyBufferSize bytes of it. A reply that begins with "FAIL" is the error CommandFailed.
  nwl::Expected<eastl::string> Request(const eastl::string& command);

  /// Request() without the reply's text.
  nwl::error_code Send(const eastl::string& command) { return Request(command).error(); }

  eastl::shared_ptr<vestaipc::IpcClient> ipc;
  bool unavailable = false;  ///< set by nothing in the library; scans alone respect it

 private:
  void Connect();
  nwl::Expected<size_t> Exchange(const eastl::string& command, eastl::string* reply);
  nwl::error_code GiveUp(int event);
};

}  // namespace wifi

#endif  // KESTREL_WIFI_CONTROL_CLIENT_H
