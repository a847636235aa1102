// SPDX-License-Identifier: Apache-2.0
#include "host/folder_content.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "host/board_lock.h"

namespace kestrel::board {

UniqueFd OpenFolder(int common, const std::string& name) {
  UniqueFd folder(openat(common, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (folder.valid() && (fstat(folder.get(), &status) != 0 || status.st_uid != geteuid())) {
    folder = UniqueFd();
    errno = EPERM;
  }
  return folder;
}

std::vector<std::string> NamesIn(int folder) {
  std::vector<std::string> names;
  // Not a copy of the descriptor, which would share the position in the list.
  const int own = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::unique_ptr<DIR, int (*)(DIR*)> list(own < 0 ? nullptr : fdopendir(own), closedir);
  if (list == nullptr) {
    if (own >= 0) {
      close(own);
    }
    return names;
  }
  // Not readdir(): with 32 bits that fails on file systems whose numbers need 64.
  while (const dirent64* entry = readdir64(list.get())) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> RemoveFolder(int common, const std::string& name, int folder,
                                      const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    unlinkat(folder, file.c_str(), 0);
  }
  // Last, because without it nobody knows the others for a board's.
  unlinkat(folder, kLockFile, 0);
  if (unlinkat(common, name.c_str(), AT_REMOVEDIR) == 0) {
    return {};
  }
  return NamesIn(folder);
}

}  // namespace kestrel::board
