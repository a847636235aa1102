// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/network_store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "config/config_file.h"
#include "config/config_reader.h"
#include "devices/wifi/wifi_text.h"
#include "host/error.h"
#include "host/file_replacement.h"
#include "host/json_text.h"

namespace kestrel::board::wifi {
namespace {

using nlohmann::json;

constexpr char kNetworksKey[] = "networks";

/// The variables that have been set. Their values may be any bytes and JSON's texts may not.
json ToJson(const StoredNetwork& network) {
  json variables = json::object();
  for (const std::string& variable : StoredNetwork::Variables()) {
    const std::optional<std::string> value = network.Get(variable);
    if (value.has_value()) {
      variables[variable] = Escape(*value);
    }
  }
  return variables;
}

void Read(ConfigReader& reader, StoredNetwork& network) {
  for (const std::string& variable : StoredNetwork::Variables()) {
    if (reader.Has(variable) && !network.Set(variable, Unescape(reader.Text(variable, "")))) {
      reader.Refuse(variable, "no network can have this");
    }
  }
  reader.RefuseUnknownKeys();
}

StoredNetwork& AddTo(std::list<StoredNetwork>& networks) {
  int highest = -1;
  for (const StoredNetwork& network : networks) {
    highest = std::max(highest, network.id());
  }
  return networks.emplace_back(highest + 1);
}

std::list<StoredNetwork> Parse(const std::string& text) {
  std::list<StoredNetwork> networks;
  const ConfigNode content = ParseJson(text);
  ConfigReader reader(&content, "");
  for (ConfigReader& network : reader.Tables(kNetworksKey)) {
    Read(network, AddTo(networks));
  }
  reader.RefuseUnknownKeys();
  return networks;
}

}  // namespace

NetworkStore::NetworkStore(std::string file) : file_(std::move(file)) { Load(); }

StoredNetwork& NetworkStore::Add() { return AddTo(networks_); }

StoredNetwork* NetworkStore::Find(int id) {
  const auto found =
      std::find_if(networks_.begin(), networks_.end(),
                   [id](const StoredNetwork& network) { return network.id() == id; });
  return found == networks_.end() ? nullptr : &*found;
}

void NetworkStore::Remove(int id) {
  networks_.remove_if([id](const StoredNetwork& network) { return network.id() == id; });
}

bool NetworkStore::Save() const {
  json networks = json::array();
  for (const StoredNetwork& network : networks_) {
    if (!network.LacksKey()) {
      networks.push_back(ToJson(network));
    }
  }
  if (networks.empty()) {
    return unlink(file_.c_str()) == 0 || errno == ENOENT;
  }
  // Only the user may read it: passphrases stand in it.
  return ReplaceFile(file_, ToText({{kNetworksKey, networks}}, 2) + "\n", S_IRUSR | S_IWUSR);
}

void NetworkStore::Load() {
  std::ifstream file(file_, std::ios::binary);
  if (!file) {
    networks_.clear();
    return;
  }
  try {
    networks_ = Parse(std::string(std::istreambuf_iterator<char>(file), {}));
  } catch (const ConfigError& error) {
    throw UsageError(file_ + ":" + std::to_string(error.line()) + ": " + error.what());
  }
}

}  // namespace kestrel::board::wifi
