// SPDX-License-Identifier: Apache-2.0
#include "wifi/quiet_write.h"

#include <errno.h>
#include <signal.h>
#include <time.h>

namespace wifi {
namespace {

/// Keeps SIGPIPE from the calling thread for the length of a scope. writev is a cancellation point,
/// so the mask has to come back also when the stack is unwound.
class BrokenPipeBlock {
 public:
  BrokenPipeBlock() {
    sigemptyset(&broken_pipe_);
    sigaddset(&broken_pipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &broken_pipe_, &previous_mask_);
    sigset_t pending;
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
  }
  ~BrokenPipeBlock() { pthread_sigmask(SIG_SETMASK, &previous_mask_, nullptr); }
  BrokenPipeBlock(const BrokenPipeBlock&) = delete;
  BrokenPipeBlock& operator=(const BrokenPipeBlock&) = delete;

  /// Takes back the signal of a write that failed with EPIPE. One that was pending before is the
  /// application's, and the write's is not to be told from it.
  void TakeBack() {
    if (!was_pending_) {
      const timespec no_wait{};
      sigtimedwait(&broken_pipe_, nullptr, &no_wait);
    }
  }

 private:
  sigset_t broken_pipe_;
  sigset_t previous_mask_;
  bool was_pending_;
};

}  // namespace

ssize_t WriteQuietly(int fd, const iovec* vectors, int count) {
  BrokenPipeBlock block;
  const ssize_t written = writev(fd, vectors, count);
  if (written < 0 && errno == EPIPE) {
    block.TakeBack();
    errno = EPIPE;
  }
  return written;
}

}  // namespace wifi
