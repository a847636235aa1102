// SPDX-License-Identifier: Apache-2.0
#include "host/board_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "host/error.h"

namespace kestrel::board {
namespace {

namespace fs = std::filesystem;

constexpr size_t kLongestName = 32;
/// Another board's end may remove the common folder between two steps of this one's start, and a
/// look at which boards run holds a lock for a moment.
constexpr int kTries = 10;

std::string FromEnvironment(const char* variable) {
  const char* value = getenv(variable);
  return value == nullptr ? "" : value;
}

std::string CommonFolder() {
  const std::string chosen = FromEnvironment("KESTREL_BOARD_DIR");
  if (!chosen.empty()) {
    // A board leaves the folder that it is started in.
    return fs::absolute(chosen);
  }
  const std::string runtime = FromEnvironment("XDG_RUNTIME_DIR");
  if (!runtime.empty() && access(runtime.c_str(), W_OK) == 0) {
    return runtime + "/kestrel-board";
  }
  return "/tmp/kestrel-board-" + std::to_string(getuid());
}

void CheckName(const std::string& name) {
  const bool only_known = std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return isalnum(c) != 0 || c == '-' || c == '_' || c == '.';
  });
  if (!only_known || name.empty() || name.size() > kLongestName || name[0] == '.') {
    throw UsageError("board name '" + name + "': 1 to " + std::to_string(kLongestName) +
                     " letters, digits, '-', '_' and '.', not beginning with '.'");
  }
}

/// Makes a folder that only its user can enter, unless there is one.
void MakeFolder(const std::string& path) {
  if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
    ThrowErrno(path);
  }
}

/// In a folder that everybody can write to, somebody else may have made ours first.
void CheckOwner(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) {
      return;
    }
    ThrowErrno(path);
  }
  if (!S_ISDIR(status.st_mode) || status.st_uid != geteuid()) {
    throw BoardError(path + ": is not a folder of yours; set KESTREL_BOARD_DIR to one that is");
  }
}

/// The folder of a board, where its socket can be reached and belongs to this user.
std::string FolderOf(const std::string& name) {
  CheckName(name);
  CheckOwner(CommonFolder());
  std::string folder = CommonFolder() + "/" + name;
  if (folder.size() + strlen("/socket") >= sizeof sockaddr_un::sun_path) {
    throw UsageError(folder +
                     ": longer than a socket's path may be; choose a shorter "
                     "KESTREL_BOARD_DIR or board name");
  }
  return folder;
}

/// Whether the board of a folder runs, and so holds its lock.
bool IsRunning(const fs::path& folder) {
  const UniqueFd lock(open((folder / "lock").c_str(), O_RDONLY | O_CLOEXEC));
  return lock.valid() && flock(lock.get(), LOCK_SH | LOCK_NB) != 0;
}

/// Whether the file that `descriptor` has open is still the one at `path`.
bool IsFileAt(int descriptor, const std::string& path) {
  struct stat open_file {};
  struct stat named_file {};
  return fstat(descriptor, &open_file) == 0 && stat(path.c_str(), &named_file) == 0 &&
         open_file.st_ino == named_file.st_ino && open_file.st_dev == named_file.st_dev;
}

/// Removes the folder of a board that was killed. One without a lock is about to be a board's.
void RemoveIfAbandoned(const fs::path& folder) {
  const std::string lock_path = folder / "lock";
  const UniqueFd lock(open(lock_path.c_str(), O_RDWR | O_CLOEXEC));
  if (lock.valid() && flock(lock.get(), LOCK_EX | LOCK_NB) == 0 &&
      IsFileAt(lock.get(), lock_path)) {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
  }
}

std::vector<fs::path> Folders() {
  std::vector<fs::path> folders;
  std::error_code missing;
  for (const fs::directory_entry& entry : fs::directory_iterator(CommonFolder(), missing)) {
    folders.push_back(entry.path());
  }
  return folders;
}

}  // namespace

BoardDirectory::BoardDirectory(const std::string& name) : path_(FolderOf(name)) {
  for (const fs::path& folder : Folders()) {
    RemoveIfAbandoned(folder);
  }
  for (int i = 0; i < kTries; ++i) {
    if (TryTake()) {
      return;
    }
    usleep(1000);
  }
  throw UsageError("a board named '" + name + "' is running already");
}

bool BoardDirectory::TryTake() {
  MakeFolder(CommonFolder());
  CheckOwner(CommonFolder());
  if (mkdir(path_.c_str(), 0700) != 0 && errno != EEXIST && errno != ENOENT) {
    ThrowErrno(path_);
  }
  const std::string lock_path = path_ + "/lock";
  lock_ = UniqueFd(open(lock_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (!lock_.valid() && errno != ENOENT) {
    ThrowErrno(lock_path);
  }
  if (flock(lock_.get(), LOCK_EX | LOCK_NB) != 0 || !IsFileAt(lock_.get(), lock_path)) {
    return false;
  }
  unlink(SocketPath().c_str());
  Adopt();
  return true;
}

BoardDirectory::~BoardDirectory() {
  if (owner_ != getpid()) {
    return;
  }
  std::error_code ignored;
  fs::remove_all(path_, ignored);
  if (FromEnvironment("KESTREL_BOARD_DIR").empty()) {
    rmdir(CommonFolder().c_str());
  }
}

void BoardDirectory::Adopt() {
  owner_ = getpid();
  const std::string text = std::to_string(owner_) + "\n";
  if (ftruncate(lock_.get(), 0) != 0 ||
      pwrite(lock_.get(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
    ThrowErrno(path_ + "/lock");
  }
}

std::string BoardDirectory::SocketPath() const { return path_ + "/socket"; }

std::vector<std::string> RunningBoards() {
  std::vector<std::string> names;
  for (const fs::path& folder : Folders()) {
    if (IsRunning(folder)) {
      names.push_back(folder.filename());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

UniqueFd WatchBoard(const std::string& name) {
  return UniqueFd(open((FolderOf(name) + "/lock").c_str(), O_RDONLY | O_CLOEXEC));
}

void WaitUntilStopped(const UniqueFd& watch) {
  while (flock(watch.get(), LOCK_SH) != 0 && errno == EINTR) {
  }
}

std::string SocketPathOf(const std::string& name) { return FolderOf(name) + "/socket"; }

}  // namespace kestrel::board
