// SPDX-License-Identifier: Apache-2.0
#include "server/board.h"

#include <algorithm>
#include <filesystem>

#include "config/config_reader.h"
#include "host/error.h"
#include "protocol/path_list.h"

namespace kestrel::board {
namespace {

/// A path as the kernel gives it for a descriptor: without links.
std::string WithoutLinks(const std::string& path) {
  std::error_code error;
  const std::string canonical = std::filesystem::weakly_canonical(path, error);
  return error ? path : canonical;
}

/// What the kernel calls the end of a redirection: a file by its path without links, a socket as it
/// was bound.
std::string KernelName(const Redirection& redirection) {
  return redirection.is_socket ? redirection.file : WithoutLinks(redirection.file);
}

bool Matches(const std::string& entry, const std::string& path) {
  return wire::Matches(entry.c_str(), entry.size(), path.c_str());
}

/// Adds paths to what can be opened, each once; those with a '#' only stand for others.
void AddNames(std::vector<std::string> paths, std::vector<std::string>* names) {
  for (std::string& path : paths) {
    if (path.back() != '#' && std::find(names->begin(), names->end(), path) == names->end()) {
      names->push_back(std::move(path));
    }
  }
}

}  // namespace

using nlohmann::json;

Board::Board(std::string name, const BoardPlace& place, const ConfigNode* config, EventLoop& loop)
    : name_(std::move(name)) {
  ConfigReader reader(config, "");
  for (const DeviceKind& kind : DeviceKinds()) {
    ConfigReader table = reader.Table(kind.name);
    devices_.emplace_back(kind.name, kind.make(table, place, loop));
  }
  for (const ConfigText& fault : reader.Texts("faults")) {
    try {
      AddFault(fault.text);
    } catch (const UsageError& error) {
      throw ConfigError(fault.line, error.what());
    }
  }
  reader.RefuseUnknownKeys();
}

std::vector<std::string> Board::Paths() const {
  std::vector<std::string> paths;
  for (const auto& [name, device] : devices_) {
    for (std::string& path : device->Paths()) {
      paths.push_back(std::move(path));
    }
  }
  return paths;
}

Device* Board::FindByPath(const std::string& path) const {
  for (const auto& [name, device] : devices_) {
    const std::vector<std::string> paths = device->Paths();
    if (std::any_of(paths.begin(), paths.end(),
                    [&](const std::string& entry) { return Matches(entry, path); })) {
      return device.get();
    }
  }
  return nullptr;
}

std::vector<std::string> Board::Files() const {
  std::vector<std::string> files;
  for (const auto& [name, device] : devices_) {
    for (const Redirection& redirection : device->Redirections()) {
      files.push_back(KernelName(redirection));
    }
  }
  return files;
}

Board::RedirectedPath Board::FindByFile(const std::string& file) const {
  for (const auto& [name, device] : devices_) {
    for (const Redirection& redirection : device->Redirections()) {
      if (KernelName(redirection) == file) {
        return {device.get(), redirection.path};
      }
    }
  }
  return {};
}

std::string Board::FindSocket(const std::string& path) const {
  for (const auto& [name, device] : devices_) {
    for (const Redirection& redirection : device->Redirections()) {
      if (redirection.is_socket && redirection.path == path) {
        return redirection.file;
      }
    }
  }
  return "";
}

void Board::AddFault(const std::string& text) {
  FaultVocabulary vocabulary;
  for (const auto& [name, device] : devices_) {
    std::vector<std::string> paths = device->Paths();
    for (const Redirection& redirection : device->Redirections()) {
      (redirection.is_socket ? vocabulary.sockets : vocabulary.files).push_back(redirection.path);
      paths.push_back(redirection.path);
    }
    AddNames(std::move(paths), &vocabulary.paths);
  }
  for (const DeviceKind& kind : DeviceKinds()) {
    vocabulary.descriptors.insert(vocabulary.descriptors.end(), kind.descriptors.begin(),
                                  kind.descriptors.end());
  }
  faults_.Add(ParseFault(text, vocabulary));
}

json Board::ListFaults() const {
  json list = json::array();
  for (const Fault& fault : faults_.faults()) {
    list.push_back({{"fault", fault.text}, {"calls", fault.seen}});
  }
  return list;
}

json Board::Show() const {
  json state = {{"board", name_}};
  for (const auto& [name, device] : devices_) {
    state[name] = device->Show();
  }
  state["faults"] = ListFaults();
  return state;
}

json Board::ChangeFaults(const json& change) {
  FaultTable before = faults_;
  if (change.value("clear", false)) {
    faults_.Clear();
  }
  try {
    for (const json& text : change.value("add", json::array())) {
      AddFault(text.get<std::string>());
    }
  } catch (...) {
    faults_ = std::move(before);
    throw;
  }
  return {{"faults", ListFaults()}};
}

json Board::Control(const json& request) {
  if (request.contains("show")) {
    return Show();
  }
  if (request.contains("paths")) {
    return {{"paths", Paths()}, {"files", Files()}};
  }
  if (request.contains("fault")) {
    return ChangeFaults(request.at("fault"));
  }
  return Addressed(request).Control(request);
}

json Board::Attach(const json& request, UniqueFd* descriptor) {
  return Addressed(request).Attach(request, descriptor);
}

Device& Board::Addressed(const json& request) const {
  for (const auto& [name, device] : devices_) {
    if (request.value("device", "") == name) {
      return *device;
    }
  }
  throw BoardError("the board does not know this request");
}

}  // namespace kestrel::board
