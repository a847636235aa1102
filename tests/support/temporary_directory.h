// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_TEMPORARY_DIRECTORY_H
#define KESTREL_TESTS_SUPPORT_TEMPORARY_DIRECTORY_H

#include <filesystem>
#include <string>

namespace kestrel::test {

/// A new directory, removed with all that is in it at the end of the scope.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string path() const { return path_.string(); }
  bool IsEmpty() const;

  /// Writes a file in the directory and returns its path.
  std::string Write(const std::string& name, const std::string& content) const;

 private:
  std::filesystem::path path_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_TEMPORARY_DIRECTORY_H
