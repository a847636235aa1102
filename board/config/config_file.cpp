// SPDX-License-Identifier: Apache-2.0
#include "config/config_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/error.h"

namespace kestrel::board {
namespace {

std::string ReadFile(const std::string& path) {
  if (std::filesystem::is_directory(path)) {
    throw UsageError(path + ": is a directory, not a configuration file");
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw UsageError(path + ": " + strerror(errno));
  }
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace

ConfigNode LoadConfigFile(const std::string& path) {
  const std::string extension = std::filesystem::path(path).extension().string();
  if (extension != ".toml" && extension != ".json") {
    throw UsageError(path + ": a configuration file is named *.toml or *.json");
  }
  const std::string text = ReadFile(path);
  return extension == ".toml" ? ParseToml(text) : ParseJson(text);
}

}  // namespace kestrel::board
