// SPDX-License-Identifier: Apache-2.0
#include "abi/elf_report.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "support/run_program.h"

namespace kestrel::test {
namespace {

std::vector<Symbol> Table(const std::string& option, const std::string& file) {
  std::vector<Symbol> symbols;
  std::istringstream lines(ReadElf(option, file));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream columns(line);
    std::string number;
    std::string value;
    std::string size;
    std::string section;
    Symbol symbol{};
    columns >> number >> value >> size >> symbol.type >> symbol.binding >> symbol.visibility >>
        section >> symbol.name;
    if (!symbol.name.empty() && number != "Num:") {
      symbol.name.resize(std::min(symbol.name.size(), symbol.name.find('@')));
      symbol.defined = section != "UND";
      symbols.push_back(symbol);
    }
  }
  return symbols;
}

std::set<std::string> Names(const std::string& file, bool defined) {
  std::set<std::string> names;
  for (const Symbol& symbol : DynamicSymbols(file)) {
    if (symbol.defined == defined) {
      names.insert(symbol.name);
    }
  }
  return names;
}

}  // namespace

std::string ReadElf(const std::string& option, const std::string& file) {
  const ProgramResult result = RunProgram({"readelf", "-W", option, file}, {{"LC_ALL", "C"}});
  if (result.status != 0 || !result.standard_error.empty()) {
    throw std::runtime_error("readelf " + option + " " + file + ": " + result.standard_error);
  }
  return result.standard_output;
}

std::vector<Symbol> AllSymbols(const std::string& file) { return Table("--syms", file); }

std::vector<Symbol> DynamicSymbols(const std::string& file) {
  std::vector<Symbol> symbols = Table("--dyn-syms", file);
  symbols.erase(std::remove_if(symbols.begin(), symbols.end(),
                               [](const Symbol& symbol) { return symbol.binding == "LOCAL"; }),
                symbols.end());
  return symbols;
}

std::set<std::string> RelocatedNames(const std::string& file) {
  const std::regex relocation("^[0-9a-f]+ +[0-9a-f]+ +R_[^ ]+ +[0-9a-f]+ +([^ @]+)");
  std::set<std::string> names;
  std::istringstream lines(ReadElf("--relocs", file));
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_search(line, match, relocation)) {
      names.insert(match[1]);
    }
  }
  return names;
}

std::set<std::string> Exports(const std::string& file) { return Names(file, true); }

std::set<std::string> Imports(const std::string& file) { return Names(file, false); }

std::vector<std::string> DynamicEntries(const std::string& tag, const std::string& file) {
  const std::regex entry(R"( \()" + tag + R"(\) +(?:[^\[]*\[(.*)\]|(.*)))");
  std::vector<std::string> values;
  std::istringstream lines(ReadElf("--dynamic", file));
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_search(line, match, entry)) {
      values.push_back(match[1].matched ? match[1] : match[2]);
    }
  }
  return values;
}

}  // namespace kestrel::test
