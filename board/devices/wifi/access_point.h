// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_ACCESS_POINT_H
#define KESTREL_BOARD_DEVICES_WIFI_ACCESS_POINT_H

#include <functional>
#include <string>
#include <vector>

namespace kestrel::board::wifi {

/// A way in which an access point protects its network, and what the daemon says of it.
struct Security {
  const char* name;
  const char* flags;     ///< in a scan list
  const char* needed;    ///< the key management that a stored network needs; empty: none helps
  const char* key_mgmt;  ///< these three in the status of a connection
  const char* pairwise_cipher;
  const char* group_cipher;

  bool IsOpen() const;
};

/// The security of that name, or null.
const Security* FindSecurity(const std::string& name);
std::vector<std::string> SecurityNames();

/// The centre frequency of a channel in MHz. Throws UsageError when there is no such channel.
int FrequencyOf(int channel);

inline constexpr size_t kLongestName = 32;

struct AccessPoint {
  std::string name;  ///< any bytes
  std::string bssid;
  const Security* security = nullptr;
  int frequency = 0;
  int signal = 0;  ///< in dBm
  bool hidden = false;
  std::string passphrase;  ///< nobody gets in without one, unless the network is open
};

/// Whether a text is an address such as 02:00:00:00:00:01.
bool IsBssid(const std::string& text);

/// What is wrong with an access point that is to be added, or nothing.
std::string CheckAccessPoint(const AccessPoint& point);

/// The access points that can be heard.
class Air {
 public:
  /// Adds a checked access point; gives it an address of its own where it has none. Throws
  /// UsageError for an address that another one has.
  void Add(AccessPoint point);
  /// These concern the access points of that name or address. Throw UsageError when there is none.
  void Remove(const std::string& name);
  void SetSignal(const std::string& name, int signal);

  const std::vector<AccessPoint>& points() const { return points_; }
  const AccessPoint* FindByBssid(const std::string& bssid) const;

  /// Is called after every change.
  void SetListener(std::function<void()> listener) { listener_ = std::move(listener); }

 private:
  std::string FreeBssid() const;
  std::vector<size_t> Find(const std::string& name) const;
  void Tell() const;

  std::vector<AccessPoint> points_;
  std::function<void()> listener_;
};

/// The access points that a board hears when nothing is configured.
std::vector<AccessPoint> DefaultAccessPoints();

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_ACCESS_POINT_H
