// SPDX-License-Identifier: Apache-2.0
#include "path_safety.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <filesystem>

namespace kestrel::relay {
namespace {

namespace fs = std::filesystem;

/// As many as the kernel follows.
constexpr int kMostLinks = 40;

/// Goes down to a folder as the kernel does, and looks at each folder and link on the way.
class Way {
 public:
  explicit Way(const fs::path& folder) { Prepend(folder); }

  std::vector<std::string> Judge(GroupWriting of_the_last) {
    bool goes_on = Step("/");
    while (goes_on && !rest_.empty()) {
      const fs::path name = rest_.front();
      rest_.pop_front();
      goes_on = Step(name == ".." ? at_.parent_path() : at_ / name);
    }
    CheckWriting(goes_on ? of_the_last : GroupWriting::kIsARisk, true);
    return risks_;
  }

 private:
  void Prepend(const fs::path& path) {
    auto place = rest_.begin();
    for (const fs::path& name : path.relative_path()) {
      if (!name.empty() && name != ".") {
        place = rest_.insert(place, name) + 1;
      }
    }
  }

  /// False where the way ends early.
  bool Step(const fs::path& next) {
    struct stat file {};
    if (lstat(next.c_str(), &file) != 0) {
      return false;
    }
    if (S_ISLNK(file.st_mode)) {
      CheckOwner(next, file.st_uid);
      return Follow(next);
    }
    if (!S_ISDIR(file.st_mode)) {
      return false;
    }
    CheckWriting(GroupWriting::kIsARisk, false);
    CheckOwner(next, file.st_uid);
    at_ = next;
    mode_ = file.st_mode;
    return true;
  }

  bool Follow(const fs::path& link) {
    std::error_code unreadable;
    const fs::path target = fs::read_symlink(link, unreadable);
    if (unreadable || ++links_ > kMostLinks) {
      return false;
    }
    Prepend(target);
    return !target.is_absolute() || Step("/");
  }

  void CheckOwner(const fs::path& path, uid_t owner) {
    if (!IsTrusted(owner)) {
      Add(path.string() + " belongs to user " + std::to_string(owner));
    }
  }

  /// Of the folder where the way is now. Where the sticky bit is set, others cannot replace what
  /// belongs to trusted users; but they can take a name that is free.
  void CheckWriting(GroupWriting by_group, bool is_name_free) {
    const bool is_protected = (mode_ & S_ISVTX) != 0 && !is_name_free;
    if ((mode_ & S_IWOTH) != 0 && !is_protected) {
      Add("everybody can write to " + at_.string());
    } else if ((mode_ & S_IWGRP) != 0 && !is_protected && by_group == GroupWriting::kIsARisk) {
      Add("a group can write to " + at_.string());
    }
  }

  void Add(const std::string& risk) {
    if (std::find(risks_.begin(), risks_.end(), risk) == risks_.end()) {
      risks_.push_back(risk);
    }
  }

  std::deque<fs::path> rest_;
  fs::path at_ = "/";
  mode_t mode_ = 0;
  int links_ = 0;
  std::vector<std::string> risks_;
};

}  // namespace

bool IsTrusted(uid_t user) { return user == 0 || user == geteuid(); }

std::vector<std::string> RisksOf(const std::string& folder, GroupWriting of_the_last) {
  return Way(folder).Judge(of_the_last);
}

}  // namespace kestrel::relay
