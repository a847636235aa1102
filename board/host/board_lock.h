// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_BOARD_LOCK_H
#define KESTREL_BOARD_HOST_BOARD_LOCK_H

#include <sys/types.h>

#include "host/unique_fd.h"

namespace kestrel::board {

/// The file in the folder of a board that says three things: by its content that kestrel-board made
/// the folder, and which process is the board; and by being locked that the board runs.
inline constexpr char kLockFile[] = "lock";

/// Makes the file in a new folder and locks it, without content. Invalid with errno set when that
/// fails.
UniqueFd CreateLock(int folder);

/// Writes its content, or another process into it. The length stays, so that no moment leaves a
/// file that IsLock does not know. False with errno set when that fails.
bool WriteLock(int lock, pid_t process);

/// Opens the file in `folder`. Invalid unless it is one that kestrel-board made.
UniqueFd OpenLock(int folder);

/// The same for a folder that kestrel-board was making: the content may be missing as well.
UniqueFd OpenUnfinishedLock(int folder);

/// Whether a board holds the lock.
bool IsHeld(const UniqueFd& lock);

/// Takes the lock of a board that was killed. False when a board holds it or has just removed it.
bool TakeAbandoned(const UniqueFd& lock, int folder);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_BOARD_LOCK_H
