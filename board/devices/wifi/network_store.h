// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_NETWORK_STORE_H
#define KESTREL_BOARD_DEVICES_WIFI_NETWORK_STORE_H

#include <list>
#include <string>

#include "devices/wifi/stored_network.h"

namespace kestrel::board::wifi {

/// The networks that the daemon knows, and the file in which they outlive it.
class NetworkStore {
 public:
  /// Reads the file, if it is there. Throws UsageError with file, line and reason when it is not
  /// as Save writes it.
  explicit NetworkStore(std::string file);

  const std::string& file() const { return file_; }
  std::list<StoredNetwork>& networks() { return networks_; }
  const std::list<StoredNetwork>& networks() const { return networks_; }

  /// The number behind the highest one: that of a network that was removed stays unused for as long
  /// as there is a younger one.
  StoredNetwork& Add();
  /// Null when there is none.
  StoredNetwork* Find(int id);
  void Remove(int id);

  /// False when the file cannot be written. Networks that need a key and have none are left out,
  /// and without any network there is no file.
  bool Save() const;
  /// Takes what is in the file in place of what is known. Throws as the constructor does, and then
  /// changes nothing.
  void Load();

 private:
  std::string file_;
  std::list<StoredNetwork> networks_;
};

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_NETWORK_STORE_H
