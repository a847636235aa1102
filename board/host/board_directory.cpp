// SPDX-License-Identifier: Apache-2.0
#include "host/board_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/board_lock.h"
#include "host/common_folder.h"
#include "host/error.h"
#include "host/folder_content.h"
#include "host/text.h"
#include "host/unfinished_folder.h"

namespace kestrel::board {
namespace {

constexpr size_t kLongestName = 32;
/// Another board's end may remove the common folder between two steps of this one's start, and a
/// look at which boards run holds a lock for a moment.
constexpr int kTries = 30;

constexpr char kSocketFile[] = "socket";
/// Where the path of the object to be preloaded is not fit for the loader: see program.cpp.
constexpr char kPreloadLink[] = "preload.so";

constexpr char kWhatToDo[] = "move it away, or choose another board name or KESTREL_BOARD_DIR";

void CheckName(const std::string& name) {
  const bool only_known = std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return isalnum(c) != 0 || c == '-' || c == '_' || c == '.';
  });
  if (!only_known || name.empty() || name.size() > kLongestName || name[0] == '.') {
    throw UsageError("board name '" + name + "': 1 to " + std::to_string(kLongestName) +
                     " letters, digits, '-', '_' and '.', not beginning with '.'");
  }
}

/// The path of the folder of a board, where its socket can be reached.
std::string PathOf(const std::string& name) {
  CheckName(name);
  std::string path = CommonFolder() + "/" + name;
  if (path.size() + 1 + strlen(kSocketFile) >= sizeof sockaddr_un::sun_path) {
    throw UsageError(path +
                     ": longer than a socket's path may be; choose a shorter "
                     "KESTREL_BOARD_DIR or board name");
  }
  return path;
}

/// The folder of the board called `name`, running or not; invalid when there is none.
UniqueFd OpenFolderOf(const std::string& name) {
  CheckName(name);
  const UniqueFd common = OpenCommonFolder();
  return common.valid() ? OpenFolder(common.get(), name) : UniqueFd();
}

/// Names of files, fit for one line.
std::string List(std::vector<std::string> names) {
  constexpr size_t kMost = 3;
  if (names.size() > kMost) {
    names.resize(kMost);
    names.emplace_back("...");
  }
  std::string list = Join(names);
  std::replace_if(
      list.begin(), list.end(), [](unsigned char c) { return iscntrl(c) != 0; }, '?');
  return list;
}

void Tell(const std::string& path, const std::vector<std::string>& names) {
  if (!names.empty()) {
    PrintDiagnostic(path + " stays: it holds what kestrel-board did not make (" + List(names) +
                    ")");
  }
}

/// Removes what a board that was killed left; the names of what stays.
std::vector<std::string> RemoveIfAbandoned(int common, const std::string& name,
                                           const std::vector<std::string>& files) {
  const UniqueFd folder = OpenFolder(common, name);
  if (!folder.valid()) {
    return {};
  }
  const UniqueFd lock =
      IsUnfinished(name) ? OpenUnfinishedLock(folder.get()) : OpenLock(folder.get());
  if (lock.valid()) {
    return TakeAbandoned(lock, folder.get()) ? RemoveFolder(common, name, folder.get(), files)
                                             : std::vector<std::string>();
  }
  if (IsUnfinished(name)) {
    // Another start may be about to make the lock; that one then begins anew.
    unlinkat(common, name.c_str(), AT_REMOVEDIR);
  }
  return {};
}

}  // namespace

BoardDirectory::BoardDirectory(const std::string& name, std::vector<std::string> files)
    : name_(name), path_(PathOf(name)), files_(std::move(files)) {
  files_.insert(files_.end(), {kSocketFile, kPreloadLink});
  RemoveAbandonedBoards();
  for (int i = 0; i < kTries; ++i) {
    if (TryTake()) {
      return;
    }
    usleep(1000);
  }
  throw UsageError("a board named '" + name + "' is running already");
}

void BoardDirectory::RemoveAbandonedBoards() const {
  const UniqueFd common = OpenCommonFolder();
  if (!common.valid()) {
    return;
  }
  for (const std::string& other : NamesIn(common.get())) {
    if (other != name_) {
      Tell(CommonFolder() + "/" + other, RemoveIfAbandoned(common.get(), other, files_));
    }
  }
}

bool BoardDirectory::TryTake() {
  common_ = MakeCommonFolder();
  if (!common_.valid()) {
    return false;
  }
  ClearPlace();
  UnfinishedFolder folder(common_.get());
  const int error = folder.Finish(name_);
  if (error == 0) {
    folder_ = folder.TakeFolder();
    lock_ = folder.TakeLock();
    owner_ = getpid();
    return true;
  }
  if (error != ENOENT && error != ENOTEMPTY && error != EEXIST) {
    throw BoardError(path_ + ": " + strerror(error));
  }
  return false;
}

void BoardDirectory::ClearPlace() const {
  const UniqueFd folder = OpenFolder(common_.get(), name_);
  if (!folder.valid() && errno == ENOENT) {
    return;
  }
  if (!folder.valid()) {
    throw BoardError(path_ + ": is in the way and not a board's folder; " + kWhatToDo);
  }
  const std::vector<std::string> others = OpenLock(folder.get()).valid()
                                              ? RemoveIfAbandoned(common_.get(), name_, files_)
                                              : NamesIn(folder.get());
  if (!others.empty()) {
    throw BoardError(path_ + ": holds what kestrel-board did not make (" + List(others) + "); " +
                     kWhatToDo);
  }
}

BoardDirectory::~BoardDirectory() {
  if (owner_ != getpid()) {
    return;
  }
  Tell(path_, RemoveFolder(common_.get(), name_, folder_.get(), files_));
  if (!IsCommonFolderChosen()) {
    rmdir(path_.substr(0, path_.rfind('/')).c_str());
  }
}

void BoardDirectory::Adopt() {
  owner_ = getpid();
  if (!WriteLock(lock_.get(), owner_)) {
    ThrowErrno(path_ + "/" + kLockFile);
  }
}

std::string BoardDirectory::SocketPath() const { return path_ + "/" + kSocketFile; }

std::vector<std::string> RunningBoards() {
  std::vector<std::string> names;
  const UniqueFd common = OpenCommonFolder();
  if (!common.valid()) {
    return names;
  }
  for (const std::string& name : NamesIn(common.get())) {
    const UniqueFd folder = IsUnfinished(name) ? UniqueFd() : OpenFolder(common.get(), name);
    if (folder.valid() && IsHeld(OpenLock(folder.get()))) {
      names.push_back(name);
    }
  }
  return names;
}

UniqueFd WatchBoard(const std::string& name) {
  const UniqueFd folder = OpenFolderOf(name);
  return folder.valid() ? OpenLock(folder.get()) : UniqueFd();
}

void WaitUntilStopped(const UniqueFd& watch) {
  while (flock(watch.get(), LOCK_SH) != 0 && errno == EINTR) {
  }
}

void TellWhatStays(const std::string& name) {
  const UniqueFd folder = OpenFolderOf(name);
  if (folder.valid() && !OpenLock(folder.get()).valid()) {
    Tell(PathOf(name), NamesIn(folder.get()));
  }
}

std::string SocketPathOf(const std::string& name) {
  static_cast<void>(OpenFolderOf(name));
  return PathOf(name) + "/" + kSocketFile;
}

}  // namespace kestrel::board
