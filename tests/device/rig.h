// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_DEVICE_RIG_H
#define KESTREL_TESTS_DEVICE_RIG_H

#include <kestrel/gpio.h>

#include <functional>
#include <ostream>
#include <string>

#include "differences.h"

namespace kestrel::test {

/// The chip has this many lines, of which the kernel has taken one.
inline constexpr int kLineCount = 64;
inline constexpr int kBusyLine = 3;

/// Two ports that a null-modem cable joins, and one behind which there is no hardware.
inline constexpr uint32_t kLeftPort = 0;
inline constexpr uint32_t kRightPort = 1;
inline constexpr uint32_t kHollowPort = 2;

inline constexpr char kChipPath[] = "/dev/gpiochip0";
inline constexpr char kWardenPath[] = "/dev/warden";
inline constexpr char kLodestonePath[] = "/dev/lodestone";
inline constexpr char kNetworkStatusPath[] = "/var/run/network_status";

inline std::string PortPath(uint32_t number) { return "/dev/ttyS" + std::to_string(number); }

/// What the security device was given when the device was made.
inline constexpr char kDeviceIdentifier[] =
    "01264B7095BADF04294E7398BDE2072C51769BC0E50A2F54799EC3E80D32577C"
    "A1C6EB10355A7FA4C9EE13385D82A7CCF1163B6085AACFF4193E6388ADD2F71C";

/// A GPIO line as somebody with a meter and the driver's documentation sees it.
struct LineOutside {
  std::string level;      ///< low or high
  std::string direction;  ///< input or output
  std::string drive;      ///< of an output: push-pull, open-drain or open-source
};

void PrintTo(const LineOutside& line, std::ostream* stream);

/// The world around the device under test. The tests are the same for every rig.
class Rig {
 public:
  Rig() = default;
  virtual ~Rig() = default;
  Rig(const Rig&) = delete;
  Rig& operator=(const Rig&) = delete;

  /// What is true of this rig.
  template <typename Value>
  const Value& Of(const Difference<Value>& difference) const {
    return HasRealParts() ? difference.real_parts : difference.board;
  }

  /// Whether real drivers and daemons are at work.
  virtual bool HasRealParts() const = 0;

  /// Drives a line from outside: an input follows, an output that drives its line does not.
  virtual void DriveLine(int line, GpioLevel level) = 0;
  virtual LineOutside LookAtLine(int line) = 0;

  /// Lets a serial port do no speed above 115200, or all of them again.
  virtual void SlowDownPort(uint32_t number) = 0;
  virtual void SpeedUpPort(uint32_t number) = 0;

  /// Lets the security device answer every request with an errno.
  virtual void FailSecurityRequests(int error) = 0;
  /// Takes kWardenPath or kLodestonePath away.
  virtual void RemoveNode(const std::string& path) = 0;
  /// Lets both be there and answer with kDeviceIdentifier.
  virtual void MendSecurityDevice() = 0;

  /// The status file of the networking service.
  virtual void WriteNetworkStatus(const std::string& hex) = 0;
  virtual void RemoveNetworkStatus() = 0;

  /// Lets the Wi-Fi daemon run without stored networks, and waits until it is on none.
  virtual void ResetWifi() = 0;
  /// Kills what listens at the library's socket, and starts it again.
  virtual void StopWifiDaemon() = 0;
  virtual void StartWifiDaemon() = 0;
  /// Kills what has the networks and the radio, and starts it with the networks that it has saved.
  virtual void KillSupplicant() = 0;
  virtual void StartSupplicant() = 0;
  /// Lets no command be answered any more, until StartWifiDaemon() or ResetWifi().
  virtual void FreezeWifiDaemon() = 0;

  /// Calls `body` in a child of this process that belongs to a user who may not open `path`.
  /// Returns what `body` returned, as InChild() does.
  virtual int AsUserWhoMayNotOpen(const std::string& path, const std::function<int()>& body) = 0;
};

/// The rig that the environment names: KESTREL_RIG=board (the default) or machine.
Rig& TheRig();

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_DEVICE_RIG_H
