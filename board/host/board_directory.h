// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_BOARD_DIRECTORY_H
#define KESTREL_BOARD_HOST_BOARD_DIRECTORY_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "host/unique_fd.h"

namespace kestrel::board {

/// The folder of one running board: its socket and the lock that tells that it runs and holds the
/// number of its process. The folders of
/// a user's boards lie together in $KESTREL_BOARD_DIR, in kestrel-board under $XDG_RUNTIME_DIR, or
/// in /tmp/kestrel-board-UID.
class BoardDirectory {
 public:
  /// Takes the name for this process. What boards that were killed left behind is cleared away.
  /// Throws UsageError for a name that no board can have or that is taken.
  explicit BoardDirectory(const std::string& name);

  /// Removes the folder, and the one around it when that is empty then and not the user's own. Only
  /// the process that made the object does so, not a child that it forked.
  ~BoardDirectory();
  BoardDirectory(const BoardDirectory&) = delete;
  BoardDirectory& operator=(const BoardDirectory&) = delete;

  const std::string& path() const { return path_; }
  std::string SocketPath() const;

  /// After a fork: from now on this process is the board and cleans up.
  void Adopt();
  /// After a fork: leaves cleaning up to the child.
  void Disown() { owner_ = -1; }

 private:
  bool TryTake();

  std::string path_;
  UniqueFd lock_;
  pid_t owner_ = -1;
};

/// The names of the boards that run, sorted.
std::vector<std::string> RunningBoards();

/// What to wait for until the board called `name` has gone with all that it made; to be taken
/// before it is told to stop, because somebody may start the next one of that name at once.
UniqueFd WatchBoard(const std::string& name);
void WaitUntilStopped(const UniqueFd& watch);

/// The socket of the board called `name`, whether it runs or not. Throws UsageError for a name that
/// no board can have.
std::string SocketPathOf(const std::string& name);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_BOARD_DIRECTORY_H
