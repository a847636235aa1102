// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BENCH_SCAN_DAEMON_H
#define KESTREL_BENCH_SCAN_DAEMON_H

#include <string>
#include <thread>

/// A Wi-Fi daemon that answers as fast as a thread can: "SCAN_RESULTS" with a list, every other
/// command with "OK\n".
class ScanDaemon {
 public:
  explicit ScanDaemon(const std::string& list);
  ~ScanDaemon();
  ScanDaemon(const ScanDaemon&) = delete;
  ScanDaemon& operator=(const ScanDaemon&) = delete;

  /// The other end of its only connection.
  int client_end() const { return client_end_; }

 private:
  int client_end_ = -1;
  int daemon_end_ = -1;
  std::thread thread_;
};

/// The daemon to which this program's own `connect` connects, whatever the address.
extern const ScanDaemon* g_scan_daemon;

#endif  // KESTREL_BENCH_SCAN_DAEMON_H
