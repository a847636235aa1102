// SPDX-License-Identifier: Apache-2.0
#include "install/manual_page.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace kestrel::test {
namespace {

/// Adds the function that is declared right behind the comment of `header` that ends at `end`.
void AddComment(const std::string& header, size_t begin, size_t end,
                std::map<std::string, std::string>& comments) {
  static const std::regex declaration(R"(^\*/\s*KESTREL_API\s[^;()]*?(\w+)\s*\()");
  std::smatch match;
  const std::string rest = header.substr(end, header.find(';', end) - end);
  if (std::regex_search(rest, match, declaration)) {
    const std::string comment = header.substr(begin, end - begin);
    comments[match[1]] = Unfolded(std::regex_replace(comment, std::regex("\n *\\* ?"), "\n"));
  }
}

}  // namespace

std::string Content(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) {
    throw std::runtime_error("cannot read " + file);
  }
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string Unfolded(const std::string& text) {
  std::istringstream stream(text);
  std::string unfolded;
  for (std::string word; stream >> word;) {
    unfolded += word + " ";
  }
  return unfolded;
}

std::set<std::string> FirstGroups(const std::string& text, const char* pattern) {
  const std::regex regex(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    found.insert((*match)[1]);
  }
  return found;
}

std::map<std::string, std::string> FunctionComments(const std::string& header_directory) {
  std::map<std::string, std::string> comments;
  for (const auto& entry : std::filesystem::directory_iterator(header_directory)) {
    const std::string header = Content(entry.path());
    for (size_t begin = header.find("/**"); begin != std::string::npos;
         begin = header.find("/**", begin + 1)) {
      AddComment(header, begin, header.find("*/", begin), comments);
    }
  }
  return comments;
}

std::string BlockOf(const std::string& page, const std::string& macro, const std::string& words) {
  std::istringstream lines(page);
  const std::regex wanted(R"(\b)" + words + R"(\b)");
  std::string block;
  bool inside = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(macro + " ", 0) == 0) {
      inside = std::regex_search(line, wanted);
    }
    if (inside) {
      block += line + "\n";
    }
  }
  return block;
}

}  // namespace kestrel::test
