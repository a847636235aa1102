// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_INSTALL_EASTL_PREFIX_H
#define KESTREL_TESTS_INSTALL_EASTL_PREFIX_H

#include <string>
#include <vector>

#include "support/temporary_directory.h"

namespace kestrel::test {

/// A temporary folder in which EASTL looks installed: its headers with libs/eastl-std behind them,
/// EABase's header, and EAStdC's header without its library.
class EastlPrefix {
 public:
  EastlPrefix();

  std::string path() const { return directory_.path() + "/eastl"; }
  std::string parent() const { return directory_.path(); }
  void AddEastl() const { AddArchive("EASTL", "eastl.cpp"); }
  void AddEastdc() const { AddArchive("EAStdC", "eastdc.cpp"); }

  /// Adds what a package manager would: a CMake package whose target has the given name. That of
  /// the name EASTL is one as a project has that builds EASTL itself.
  void AddEastlPackage(const std::string& target) const;

 private:
  void AddArchive(const std::string& name, const std::string& source) const;

  TemporaryDirectory directory_;
};

/// Runs a program that has to succeed.
void Require(const std::vector<std::string>& arguments);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_INSTALL_EASTL_PREFIX_H
