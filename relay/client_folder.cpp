// SPDX-License-Identifier: Apache-2.0
#include "client_folder.h"

#include <sys/stat.h>

#include <cerrno>

#include "host/error.h"
#include "path_safety.h"
#include "supplicant_link.h"

namespace kestrel::relay {
namespace {

/// With a slash at its end, a link would be followed.
std::string WithoutSlashAtEnd(const std::string& path) {
  const size_t last = path.find_last_not_of('/');
  return last == std::string::npos ? "/" : path.substr(0, last + 1);
}

void CheckIsOwn(const std::string& folder) {
  struct stat file {};
  if (lstat(folder.c_str(), &file) != 0) {
    board::ThrowErrno(folder);
  }
  const std::string cannot = "cannot use " + folder + " for links: it ";
  if (S_ISLNK(file.st_mode)) {
    throw board::BoardError(cannot + "is a symbolic link");
  }
  if (!S_ISDIR(file.st_mode)) {
    throw board::BoardError(cannot + "is not a folder");
  }
  if (!IsTrusted(file.st_uid)) {
    throw board::BoardError(cannot + "belongs to user " + std::to_string(file.st_uid));
  }
}

}  // namespace

int PrepareClientFolder(const std::string& folder) {
  const std::string path = WithoutSlashAtEnd(folder);
  if (mkdir(path.c_str(), 0755) != 0 && errno != EEXIST) {
    board::ThrowErrno(path);
  }
  CheckIsOwn(path);
  return RemoveDeadLinks(path);
}

}  // namespace kestrel::relay
