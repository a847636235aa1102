// SPDX-License-Identifier: Apache-2.0
#include "support/temporary_directory.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace kestrel::test {

TemporaryDirectory::TemporaryDirectory() {
  std::string name = (std::filesystem::temp_directory_path() / "kestrel-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("mkdtemp failed");
  }
  path_ = name;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

bool TemporaryDirectory::IsEmpty() const { return std::filesystem::is_empty(path_); }

std::string TemporaryDirectory::Write(const std::string& name, const std::string& content) const {
  const std::filesystem::path file = path_ / name;
  std::ofstream(file) << content;
  return file.string();
}

}  // namespace kestrel::test
