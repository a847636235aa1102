// SPDX-License-Identifier: Apache-2.0
#include "interruption.h"

#include <cerrno>
#include <ctime>

namespace kestrelctl {
namespace {

using Clock = std::chrono::steady_clock;

timespec Until(Clock::time_point end) {
  const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(end - Clock::now());
  if (left.count() <= 0) {
    return {0, 0};
  }
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  return {static_cast<time_t>(seconds.count()), static_cast<long>((left - seconds).count())};
}

}  // namespace

Interruption::Interruption() : signals_() {
  sigemptyset(&signals_);
  sigaddset(&signals_, SIGINT);
  sigaddset(&signals_, SIGTERM);
  sigprocmask(SIG_BLOCK, &signals_, nullptr);
}

bool Interruption::WaitFor(std::chrono::milliseconds time) const {
  const Clock::time_point end = Clock::now() + time;
  int signal = -1;
  do {
    const timespec left = Until(end);
    signal = sigtimedwait(&signals_, nullptr, &left);
    // A stop and a continue end the wait early with EINTR.
  } while (signal < 0 && errno == EINTR);
  return signal > 0;
}

}  // namespace kestrelctl
