// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_SERVER_BOARD_H
#define KESTREL_BOARD_SERVER_BOARD_H

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "config/config_node.h"
#include "devices/device.h"
#include "server/fault_table.h"

namespace kestrel::board {

/// The devices of one board and the faults that lie on them.
class Board {
 public:
  /// `config` may be null. Throws ConfigError.
  Board(std::string name, const BoardPlace& place, const ConfigNode* config, EventLoop& loop);

  const std::string& name() const { return name_; }
  std::vector<std::string> Paths() const;

  /// The device that stands in for `path`, or null.
  Device* FindByPath(const std::string& path) const;

  /// The real files and sockets to which the devices redirect, by the paths that the kernel gives
  /// them.
  std::vector<std::string> Files() const;

  /// The path of a device that is redirected to the real file at `file`, and the device.
  struct RedirectedPath {
    Device* device = nullptr;  ///< null when there is none
    std::string path;
  };
  RedirectedPath FindByFile(const std::string& file) const;

  /// The real socket to which connections to `path` go; empty when there is none.
  std::string FindSocket(const std::string& path) const;

  FaultTable& faults() { return faults_; }
  /// Throws UsageError.
  void AddFault(const std::string& text);

  /// A request of the command line: {"show": true}, {"paths": true}, {"fault": {…}} or one to a
  /// device. Throws BoardError to refuse it.
  nlohmann::json Control(const nlohmann::json& request);

  /// A request to a device for a descriptor, as Device::Attach.
  nlohmann::json Attach(const nlohmann::json& request, UniqueFd* descriptor);

 private:
  /// The device that a request is for. Throws BoardError.
  Device& Addressed(const nlohmann::json& request) const;
  nlohmann::json Show() const;
  nlohmann::json ChangeFaults(const nlohmann::json& change);
  nlohmann::json ListFaults() const;

  std::string name_;
  std::vector<std::pair<std::string, std::unique_ptr<Device>>> devices_;
  FaultTable faults_;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_SERVER_BOARD_H
