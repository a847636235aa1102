// SPDX-License-Identifier: Apache-2.0
#include "host/common_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "host/error.h"

namespace kestrel::board {
namespace {

std::string FromEnvironment(const char* variable) {
  const char* value = getenv(variable);
  return value == nullptr ? "" : value;
}

std::string Octal(mode_t mode) {
  std::array<char, 16> text{};
  snprintf(text.data(), text.size(), "%04o", static_cast<unsigned>(mode & 07777));
  return text.data();
}

[[noreturn]] void ThrowNotYours(const std::string& path) {
  throw BoardError(path + ": is not a folder of yours; set KESTREL_BOARD_DIR to one that is");
}

/// In a folder that everybody can write to, somebody else may have made ours first.
void CheckIsPrivate(int folder, const std::string& path) {
  struct stat status {};
  if (fstat(folder, &status) != 0) {
    ThrowErrno(path);
  }
  if (status.st_uid != geteuid()) {
    ThrowNotYours(path);
  }
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    throw BoardError(path + ": others can write to this folder (mode " + Octal(status.st_mode) +
                     "); run chmod go-w on it, or set KESTREL_BOARD_DIR to another");
  }
}

}  // namespace

std::string CommonFolder() {
  if (IsCommonFolderChosen()) {
    // A board leaves the folder that it is started in.
    return std::filesystem::absolute(FromEnvironment("KESTREL_BOARD_DIR"));
  }
  const std::string runtime = FromEnvironment("XDG_RUNTIME_DIR");
  if (!runtime.empty() && access(runtime.c_str(), W_OK) == 0) {
    return runtime + "/kestrel-board";
  }
  return "/tmp/kestrel-board-" + std::to_string(getuid());
}

bool IsCommonFolderChosen() { return !FromEnvironment("KESTREL_BOARD_DIR").empty(); }

UniqueFd OpenCommonFolder() {
  const std::string path = CommonFolder();
  UniqueFd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (folder.valid()) {
    CheckIsPrivate(folder.get(), path);
  } else if (errno == ENOTDIR || errno == ELOOP) {
    ThrowNotYours(path);
  } else if (errno != ENOENT) {
    ThrowErrno(path);
  }
  return folder;
}

UniqueFd MakeCommonFolder() {
  const std::string path = CommonFolder();
  if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
    ThrowErrno(path);
  }
  return OpenCommonFolder();
}

}  // namespace kestrel::board
