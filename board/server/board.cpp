// SPDX-License-Identifier: Apache-2.0
#include "server/board.h"

#include <algorithm>

#include "config/config_reader.h"
#include "host/error.h"

namespace kestrel::board {

using nlohmann::json;

Board::Board(std::string name, const ConfigNode* config, EventLoop& loop) : name_(std::move(name)) {
  ConfigReader reader(config, "");
  for (const DeviceKind& kind : DeviceKinds()) {
    ConfigReader table = reader.Table(kind.name);
    devices_.emplace_back(kind.name, kind.make(table, loop));
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
    if (std::find(paths.begin(), paths.end(), path) != paths.end()) {
      return device.get();
    }
  }
  return nullptr;
}

void Board::AddFault(const std::string& text) {
  FaultVocabulary vocabulary;
  vocabulary.paths = Paths();
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
  } catch (const UsageError&) {
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
    return {{"paths", Paths()}};
  }
  if (request.contains("fault")) {
    return ChangeFaults(request.at("fault"));
  }
  for (const auto& [name, device] : devices_) {
    if (request.value("device", "") == name) {
      return device->Control(request);
    }
  }
  throw BoardError("the board does not know this request");
}

}  // namespace kestrel::board
