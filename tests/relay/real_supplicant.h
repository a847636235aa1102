// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_RELAY_REAL_SUPPLICANT_H
#define KESTREL_TESTS_RELAY_REAL_SUPPLICANT_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/wificonfig.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "relay/unix_sockets.h"
#include "support/run_program.h"

namespace kestrel::test {

/// What the library tells of a stored network.
struct StoredNetwork {
  std::string name;
  WifiSecurity security;
  bool enabled;

  bool operator==(const StoredNetwork& other) const {
    return name == other.name && security == other.security && enabled == other.enabled;
  }
};

std::ostream& operator<<(std::ostream& stream, const StoredNetwork& network);

int StoreOpen(const std::string& name);
int StoreWpa2(const std::string& name, const std::string& passphrase);
/// Asks for the stored networks and returns their records.
std::vector<WifiStoredNetworkRecord> StoredRecords();
std::vector<StoredNetwork> Stored();

/// The supplicant of the distribution on the loopback interface, as on a wire, which takes every
/// network without security for reached; and a relay at the library's own socket. To be run in
/// namespaces of its own.
class RealSupplicant : public testing::Test {
 protected:
  RealSupplicant();
  ~RealSupplicant() override;

  /// A supplicant that has read its configuration and can be reached.
  void StartSupplicant();
  /// Ends it with the given signal and waits until it has gone.
  void EndSupplicant(int signal);
  void AwaitEndOfSupplicant();
  /// The networks in the supplicant's file, each as its lines without what the supplicant adds to
  /// all of them.
  static std::vector<std::string> SavedNetworks();
  static void WriteConfiguration(const std::string& networks);
  /// Waits until the supplicant's status has the given line.
  static bool AwaitStatus(const std::string& line);

 private:
  DatagramSocket service_manager_{"/run/notify"};
  std::unique_ptr<BackgroundProgram> relay_;
  std::unique_ptr<BackgroundProgram> supplicant_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_RELAY_REAL_SUPPLICANT_H
