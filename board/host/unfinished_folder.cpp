// SPDX-License-Identifier: Apache-2.0
#include "host/unfinished_folder.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "host/board_lock.h"
#include "host/common_folder.h"
#include "host/folder_content.h"

namespace kestrel::board {
namespace {

constexpr char kPrefix[] = ".kestrel-board-";

}  // namespace

bool IsUnfinished(const std::string& name) { return name.rfind(kPrefix, 0) == 0; }

UnfinishedFolder::UnfinishedFolder(int common) : common_(common) {
  std::string path = CommonFolder() + "/" + kPrefix + "XXXXXX";
  if (mkdtemp(path.data()) != nullptr) {
    name_ = path.substr(path.rfind('/') + 1);
    folder_ = OpenFolder(common_, name_);
  }
  error_ = folder_.valid() ? 0 : errno;
}

UnfinishedFolder::~UnfinishedFolder() {
  if (name_.empty()) {
    return;
  }
  if (folder_.valid()) {
    RemoveFolder(common_, name_, folder_.get(), {});
  } else {
    unlinkat(common_, name_.c_str(), AT_REMOVEDIR);
  }
}

int UnfinishedFolder::Finish(const std::string& name) {
  if (error_ != 0) {
    return error_;
  }
  lock_ = CreateLock(folder_.get());
  if (!lock_.valid() || !WriteLock(lock_.get(), getpid()) ||
      renameat(common_, name_.c_str(), common_, name.c_str()) != 0) {
    return errno;
  }
  name_.clear();
  return 0;
}

}  // namespace kestrel::board
