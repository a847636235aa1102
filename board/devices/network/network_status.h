// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_NETWORK_NETWORK_STATUS_H
#define KESTREL_BOARD_DEVICES_NETWORK_NETWORK_STATUS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrel::board::network {

/// The content of the status file; nothing where there is no file.
using Status = std::optional<std::vector<uint8_t>>;

/// The longest status file that a board makes.
inline constexpr size_t kLongestStatus = 4096;

/// What is wrong with a text that should be a status, or nothing: "ready", "down", "absent" or
/// "bytes" with the content in hexadecimal.
std::string CheckStatus(const std::string& text);

/// The status that such a text stands for.
Status ParseStatus(const std::string& text);

/// Whether programs take networking for ready.
bool IsReady(const Status& status);

/// The name of the status file in the board's folder.
inline constexpr char kStatusFile[] = "network_status";

/// The status file itself. Programs may write it as well, so what it says is read from it.
class StatusFile {
 public:
  /// Throw BoardError when the file cannot be written.
  StatusFile(const std::string& folder, const Status& status);
  /// Changes all of the file at once: whoever reads it sees what was or what is, and no mixture.
  void Write(const Status& status) const;

  Status Read() const;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace kestrel::board::network

#endif  // KESTREL_BOARD_DEVICES_NETWORK_NETWORK_STATUS_H
