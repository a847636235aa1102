// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_DEVICE_H
#define KESTREL_BOARD_DEVICES_DEVICE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "host/unique_fd.h"
#include "protocol/wire.h"

namespace CLI {
class App;
}

namespace kestrel::board {

class CommandContext;
class ConfigReader;
class EventLoop;

class Session;

/// What a device answers to an ioctl: a result and, on success, the bytes that go back into the
/// argument; or an errno. With `session`, the call also makes a new descriptor, whose number goes
/// to `descriptor_offset` in the argument.
struct IoctlAnswer {
  int result = 0;
  int error = 0;
  std::vector<uint8_t> data;
  std::unique_ptr<Session> session;
  int descriptor_offset = -1;
};

/// The device's side of one open file. It is destroyed when the last copy of the descriptor has
/// been closed, also by the death of the programs that had it.
class Session {
 public:
  virtual ~Session() = default;
  /// `argument` has the size that is in the request, or none where the request only returns one.
  virtual IoctlAnswer Ioctl(uint32_t request, const std::vector<uint8_t>& argument) = 0;

  /// What faults call the descriptor: the path that it was opened by, or a word for its kind.
  virtual std::string Name() const = 0;
};

/// What a device answers to an open: a session; or an errno; or the path of a real file that is to
/// be opened in its place. A session beside that path lasts until the program has opened the file.
struct OpenAnswer {
  std::unique_ptr<Session> session;
  int error = 0;
  std::string redirect;
};

/// A path of a device and the real file to which opens of it are redirected, or the real socket to
/// which connections to it are.
struct Redirection {
  std::string path;
  std::string file;
  bool is_socket = false;
};

/// A device model. All calls come from the board's one thread.
class Device {
 public:
  virtual ~Device() = default;

  /// The fixed paths that the device stands in for. One that ends in '#' stands for all that have a
  /// number there.
  virtual std::vector<std::string> Paths() const = 0;
  virtual OpenAnswer Open(const std::string& path, int flags) = 0;

  /// The real files and sockets to which the device redirects, for as long as the board runs.
  /// Faults may lie on calls on their descriptors.
  virtual std::vector<Redirection> Redirections() const { return {}; }

  /// The settings that the terminal to which `path` is redirected does not keep.
  virtual wire::TerminalBits NotKept(const std::string& /*path*/) const { return {}; }

  /// The state for `kestrel-board show`.
  virtual nlohmann::json Show() const = 0;

  /// A request of one of the device's own commands. Throws BoardError to refuse it.
  virtual nlohmann::json Control(const nlohmann::json& request) = 0;

  /// A request for a descriptor, by one of the device's own commands: an answer as Control gives,
  /// and the descriptor. Throws BoardError to refuse it.
  virtual nlohmann::json Attach(const nlohmann::json& request, UniqueFd* descriptor);
};

/// What a device may know of the board that it is made for.
struct BoardPlace {
  std::string given_name;  ///< the board's name, empty where nobody gave it one
  /// The board's own. Of what a device makes there, DeviceKind::files go when the board ends.
  std::string folder;
};

/// An ioctl that faults may name.
struct NamedRequest {
  const char* name;
  uint32_t number;
};

/// An option of the commands that make a board, whose value becomes a request to a device.
struct BoardOption {
  const char* name;   ///< with its dashes
  const char* value;  ///< what help calls its value
  const char* help;
  /// Throws UsageError.
  std::function<nlohmann::json(const std::string& value)> request;
};

/// All that the rest of the board knows of a kind of device. A new kind is one folder under
/// devices/ and one entry in registry.cpp.
struct DeviceKind {
  /// The table of the configuration, the key in `show --json` and the target of control requests.
  const char* name;
  std::function<std::unique_ptr<Device>(ConfigReader& config, const BoardPlace& place,
                                        EventLoop& loop)>
      make;
  /// Prints what Show() gave for a person.
  std::function<void(const nlohmann::json& state, std::ostream& out)> print;
  std::function<void(CLI::App& app, const CommandContext& context)> add_commands;
  std::vector<NamedRequest> requests;
  /// Names of its sessions that are not paths, for faults.
  std::vector<std::string> descriptors;
  std::vector<BoardOption> options;
  /// The names of all that its devices ever make in the board's folder.
  std::vector<std::string> files;
};

/// The kinds of devices that every board has, in the order in which they are shown.
const std::vector<DeviceKind>& DeviceKinds();

/// The names of all that devices make in a board's folder.
std::vector<std::string> DeviceFiles();

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_DEVICES_DEVICE_H
