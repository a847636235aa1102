// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_BOARD_DIRECTORY_H
#define KESTREL_BOARD_HOST_BOARD_DIRECTORY_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "host/unique_fd.h"

namespace kestrel::board {

/// The folder of one running board: its lock, its socket and what its devices make. The folders of
/// a user's boards lie together in the common folder.
///
/// A folder that kestrel-board did not make is left alone, and out of one that it made only files
/// are removed whose names it knows.
class BoardDirectory {
 public:
  /// Takes the name for this process. What boards that were killed left behind is cleared away.
  /// `files` are the names of all that a board's devices may make in its folder. Throws UsageError
  /// for a name that no board can have or that is taken, and BoardError when the folder cannot be
  /// made or is not a board's; nothing is left then.
  BoardDirectory(const std::string& name, std::vector<std::string> files);

  /// Removes the folder, and the one around it when that is empty then and not the user's own. Only
  /// the process that made the object does so, not a child that it forked. A folder in which
  /// somebody else has put something stays with that, which standard error tells.
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
  /// False when another board's end or a look at which boards run came in between.
  bool TryTake();
  /// Makes way for a board where a folder of its name is. Throws BoardError when it is not one that
  /// a board left.
  void ClearPlace() const;
  void RemoveAbandonedBoards() const;

  std::string name_;
  std::string path_;
  std::vector<std::string> files_;
  UniqueFd common_;
  UniqueFd folder_;
  UniqueFd lock_;
  pid_t owner_ = -1;
};

/// The names of the boards that run, sorted.
std::vector<std::string> RunningBoards();

/// What to wait for until the board called `name` has gone with all that it made; to be taken
/// before it is told to stop, because somebody may start the next one of that name at once.
UniqueFd WatchBoard(const std::string& name);
void WaitUntilStopped(const UniqueFd& watch);

/// Tells standard error where the folder of a board that has stopped stays, and why.
void TellWhatStays(const std::string& name);

/// The socket of the board called `name`, whether it runs or not. Throws UsageError for a name that
/// no board can have.
std::string SocketPathOf(const std::string& name);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_BOARD_DIRECTORY_H
