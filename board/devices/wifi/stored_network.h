// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_STORED_NETWORK_H
#define KESTREL_BOARD_DEVICES_WIFI_STORED_NETWORK_H

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "devices/wifi/access_point.h"

namespace kestrel::board::wifi {

/// One network that the daemon knows.
class StoredNetwork {
 public:
  explicit StoredNetwork(int id) : id_(id) {}

  int id() const { return id_; }
  const std::optional<std::string>& ssid() const { return ssid_; }
  /// An address that alone will do, or nothing.
  const std::optional<std::string>& bssid() const { return bssid_; }
  bool disabled() const { return disabled_ != 0; }
  void SetDisabled(bool disabled) { disabled_ = disabled ? 1 : 0; }
  int priority() const { return priority_; }
  bool has_key() const { return key_.has_value(); }

  /// Sets a variable as SET_NETWORK does; false for one that is not known and a value that cannot
  /// be.
  bool Set(const std::string& variable, const std::string& value);
  /// A variable's value as Set takes it, or nothing where none has been set.
  std::optional<std::string> Get(const std::string& variable) const;
  /// The variables that Set and Get know.
  static std::vector<std::string> Variables();

  /// Whether this network may be that of the access point; the key is another question.
  bool Matches(const AccessPoint& point) const;
  /// Whether the access point lets it in.
  bool OpensWith(const AccessPoint& point) const;
  /// Whether it needs a key and has none.
  bool LacksKey() const;

 private:
  struct Variable;
  static const std::vector<Variable>& Table();

  bool SetSsid(const std::string& value);
  bool SetKey(const std::string& value);
  bool SetKeyManagement(const std::string& value);
  bool SetBssid(const std::string& value);
  bool SetScanSsid(const std::string& value);
  bool SetPriority(const std::string& value);
  bool SetDisabledText(const std::string& value);
  std::optional<std::string> GetSsid() const;
  std::optional<std::string> GetKey() const { return key_; }
  std::optional<std::string> GetKeyManagement() const;
  std::optional<std::string> GetBssid() const { return bssid_; }
  std::optional<std::string> GetScanSsid() const { return std::to_string(scan_ssid_); }
  std::optional<std::string> GetPriority() const { return std::to_string(priority_); }
  std::optional<std::string> GetDisabled() const { return std::to_string(disabled_); }

  int id_;
  std::optional<std::string> ssid_;
  std::optional<std::string> bssid_;
  std::optional<std::string> key_;  ///< a passphrase in quotes, or 64 hexadecimal digits
  std::set<std::string> key_management_ = {"WPA-PSK", "WPA-EAP"};
  int scan_ssid_ = 0;
  int priority_ = 0;
  int disabled_ = 1;
};

/// Whether the daemon takes a text for a passphrase.
bool IsPassphrase(const std::string& text);

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_STORED_NETWORK_H
