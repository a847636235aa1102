// SPDX-License-Identifier: Apache-2.0
#include "support/descriptors.h"

#include <dirent.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

namespace kestrel::test {

namespace {

constexpr char kOwnFolder[] = "/proc/self/fd";

/// The descriptors that a folder of /proc lists, one of this function's own not among them.
std::set<int> DescriptorsIn(const std::string& folder) {
  std::set<int> open;
  DIR* directory = opendir(folder.c_str());
  if (directory == nullptr) {
    abort();
  }
  while (const dirent* entry = readdir(directory)) {
    if (entry->d_name[0] != '.') {
      open.insert(atoi(entry->d_name));
    }
  }
  const int own = dirfd(directory);
  closedir(directory);
  if (folder == kOwnFolder) {
    open.erase(own);
  }
  return open;
}

}  // namespace

std::set<int> OpenDescriptors() { return DescriptorsIn(kOwnFolder); }

size_t DescriptorsBetweenCallsOf(pid_t process) {
  size_t fewest = SIZE_MAX;
  for (int sample = 0; sample < 50; ++sample) {
    fewest = std::min(fewest, DescriptorsIn("/proc/" + std::to_string(process) + "/fd").size());
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return fewest;
}

}  // namespace kestrel::test
