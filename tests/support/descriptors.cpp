// SPDX-License-Identifier: Apache-2.0
#include "support/descriptors.h"

#include <dirent.h>

#include <cstdlib>

namespace kestrel::test {

std::set<int> OpenDescriptors() {
  std::set<int> open;
  DIR* directory = opendir("/proc/self/fd");
  if (directory == nullptr) {
    abort();
  }
  while (const dirent* entry = readdir(directory)) {
    if (entry->d_name[0] != '.') {
      open.insert(atoi(entry->d_name));
    }
  }
  open.erase(dirfd(directory));
  closedir(directory);
  return open;
}

}  // namespace kestrel::test
