// SPDX-License-Identifier: Apache-2.0
#include "abi/promised_names.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>

namespace kestrel::test {
namespace {

std::string Content(const std::filesystem::path& file) {
  std::ifstream stream(file);
  if (!stream) {
    throw std::runtime_error("cannot read " + file.string());
  }
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string Without(const std::string& text, const char* pattern) {
  return std::regex_replace(text, std::regex(pattern), "");
}

void AddFirstGroups(const std::string& text, const char* pattern, std::set<std::string>& names) {
  const std::regex regex(pattern);
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    names.insert((*match)[1]);
  }
}

}  // namespace

std::set<std::string> GlobalNames(const std::string& version_script) {
  const std::string script = Without(Content(version_script), "#[^\\n]*");
  const size_t begin = script.find("global:");
  const size_t end = script.find("local:", begin);
  if (begin == std::string::npos || end == std::string::npos) {
    throw std::runtime_error(version_script + " lacks global: or local:");
  }
  std::set<std::string> names;
  AddFirstGroups(script.substr(begin, end - begin), R"(([^\s;:]+)\s*;)", names);
  return names;
}

std::set<std::string> DeclaredNames(const std::string& header_directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(header_directory)) {
    const std::string code =
        Without(Without(Content(entry.path()), R"(/\*[^*]*\*+([^/*][^*]*\*+)*/)"), "#[^\\n]*");
    AddFirstGroups(code, R"(KESTREL_API\s[^;()]*?(\w+)\s*\()", names);
  }
  return names;
}

}  // namespace kestrel::test
