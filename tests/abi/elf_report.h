// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_ABI_ELF_REPORT_H
#define KESTREL_TESTS_ABI_ELF_REPORT_H

#include <set>
#include <string>
#include <vector>

namespace kestrel::test {

struct Symbol {
  std::string name;
  std::string type;        ///< such as FUNC
  std::string binding;     ///< such as GLOBAL
  std::string visibility;  ///< such as DEFAULT
  bool defined;
};

/// What readelf prints with the given option. Every function here throws when the file cannot be
/// read.
std::string ReadElf(const std::string& option, const std::string& file);

/// The symbols of an object file, or of a library that has not been stripped.
std::vector<Symbol> AllSymbols(const std::string& file);

/// The symbols that the dynamic linker sees, without their versions.
std::vector<Symbol> DynamicSymbols(const std::string& file);
std::set<std::string> Exports(const std::string& file);
std::set<std::string> Imports(const std::string& file);

/// The symbols that relocations name, without their versions.
std::set<std::string> RelocatedNames(const std::string& file);

/// The values of all entries of the dynamic section with the given tag, such as NEEDED.
std::vector<std::string> DynamicEntries(const std::string& tag, const std::string& file);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_ABI_ELF_REPORT_H
