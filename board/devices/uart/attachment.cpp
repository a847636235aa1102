// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/attachment.h"

#include <linux/sockios.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "host/error.h"

namespace kestrel::board::uart {
namespace {

/// Ctrl-].
constexpr char kLeave = 0x1d;
/// No more than a pipe takes at once when it says that it takes something.
constexpr size_t kChunk = 4096;
/// How often to look whether all has arrived: nothing tells when.
constexpr int kLookInterval = 10;
constexpr double kDefaultLinger = 1.0;

/// Turns signals that would end or stop the command into something to read.
UniqueFd CatchSignals(sigset_t* before) {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGALRM, SIGTSTP}) {
    sigaddset(&signals, number);
  }
  sigprocmask(SIG_BLOCK, &signals, before);
  return UniqueFd(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

/// Takes what was written off the front of `bytes`.
bool Shorten(std::string& bytes, ssize_t written) {
  if (written > 0) {
    bytes.erase(0, static_cast<size_t>(written));
  }
  return written > 0;
}

}  // namespace

RawTerminal::RawTerminal() : is_terminal_(tcgetattr(STDIN_FILENO, &before_) == 0) { MakeRaw(); }

void RawTerminal::MakeRaw() const {
  if (is_terminal_) {
    termios raw = before_;
    cfmakeraw(&raw);
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
  }
}

void RawTerminal::Restore() const {
  if (is_terminal_) {
    tcsetattr(STDIN_FILENO, TCSANOW, &before_);
  }
}

Attachment::Attachment(UniqueFd wire, std::optional<double> linger)
    : wire_(std::move(wire)), linger_(linger), signals_(CatchSignals(&signals_before_)) {
  // A reader of the output that has gone is an error of write.
  signal(SIGPIPE, SIG_IGN);
}

Attachment::~Attachment() {
  terminal_.Restore();
  sigprocmask(SIG_SETMASK, &signals_before_, nullptr);
}

int Attachment::Run() {
  bool attached = true;
  while (attached) {
    std::array<pollfd, 4> watched = {
        {{signals_.get(), POLLIN, 0}, WatchInput(), WatchWire(), WatchOutput()}};
    if (poll(watched.data(), watched.size(), Timeout()) < 0 && errno != EINTR) {
      ThrowErrno("poll");
    }
    MoveWire(watched[2].revents);
    WriteOutput(watched[3].revents);
    attached = (watched[0].revents == 0 || HandleSignal()) &&
               (watched[1].revents == 0 || ReadInput()) && !IsDone();
  }
  return signal_number_;
}

pollfd Attachment::WatchInput() const {
  // A descriptor of -1 is not looked at, not even for its end.
  return {input_ended_ || !to_wire_.empty() ? -1 : STDIN_FILENO, POLLIN, 0};
}

pollfd Attachment::WatchWire() const {
  const int events = (to_output_.empty() ? POLLIN : 0) | (to_wire_.empty() ? 0 : POLLOUT);
  return {wire_.get(), static_cast<short>(events), 0};
}

pollfd Attachment::WatchOutput() const {
  return {output_lost_ ? -1 : STDOUT_FILENO, static_cast<short>(to_output_.empty() ? 0 : POLLOUT),
          0};
}

bool Attachment::HandleSignal() {
  signalfd_siginfo info{};
  if (read(signals_.get(), &info, sizeof info) != static_cast<ssize_t>(sizeof info)) {
    return true;
  }
  if (info.ssi_signo == SIGTSTP) {
    terminal_.Restore();
    raise(SIGSTOP);
    terminal_.MakeRaw();
    return true;
  }
  signal_number_ = static_cast<int>(info.ssi_signo);
  return false;
}

bool Attachment::ReadInput() {
  std::array<char, kChunk> bytes{};
  const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
  if (count <= 0) {
    input_ended_ = count == 0 || (errno != EINTR && errno != EAGAIN);
    return !(input_ended_ && terminal_.is_terminal());
  }
  had_input_ = true;
  to_wire_.assign(bytes.data(), static_cast<size_t>(count));
  const size_t leave = terminal_.is_terminal() ? to_wire_.find(kLeave) : std::string::npos;
  if (leave == std::string::npos) {
    return true;
  }
  to_wire_.resize(leave);
  // Who leaves does not wait until the program reads. What has no room is lost with the wire.
  static_cast<void>(
      send(wire_.get(), to_wire_.data(), to_wire_.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
  return false;
}

void Attachment::MoveWire(short events) {
  if ((events & POLLOUT) != 0 &&
      Shorten(to_wire_,
              send(wire_.get(), to_wire_.data(), to_wire_.size(), MSG_DONTWAIT | MSG_NOSIGNAL))) {
    last_moved_ = Clock::now();
  }
  if ((events & ~POLLOUT) != 0 && to_output_.empty()) {
    std::array<char, kChunk> bytes{};
    const ssize_t count = recv(wire_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
      throw BoardError("the board has stopped");
    }
    if (!output_lost_) {
      to_output_.assign(bytes.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
      last_moved_ = Clock::now();
    }
  }
}

void Attachment::LoseOutput() {
  output_lost_ = true;
  to_output_.clear();
  last_moved_ = Clock::now();
}

void Attachment::WriteOutput(short events) {
  if ((events & (POLLERR | POLLNVAL)) != 0) {
    return LoseOutput();
  }
  if ((events & POLLOUT) == 0) {
    return;
  }
  const ssize_t written = write(STDOUT_FILENO, to_output_.data(), to_output_.size());
  if (written < 0 && errno == EPIPE) {
    return LoseOutput();
  }
  if (written < 0 && errno != EINTR && errno != EAGAIN) {
    ThrowErrno("standard output");
  }
  Shorten(to_output_, written);
}

bool Attachment::AllHasArrived() const {
  int waiting = 0;
  return to_wire_.empty() && ioctl(wire_.get(), SIOCOUTQ, &waiting) == 0 && waiting == 0;
}

int Attachment::Timeout() const {
  if (!output_lost_ && (!input_ended_ || (!had_input_ && !linger_.has_value()))) {
    return -1;
  }
  return kLookInterval;
}

bool Attachment::IsSilent() const {
  const std::chrono::duration<double> quiet = Clock::now() - last_moved_;
  return quiet.count() >= linger_.value_or(kDefaultLinger);
}

bool Attachment::IsDone() {
  if (Timeout() < 0 || !to_output_.empty()) {
    return false;
  }
  if (!AllHasArrived()) {
    last_moved_ = Clock::now();
    return false;
  }
  // An answer that nobody would see is not waited for, but input that may be on its way is.
  return (output_lost_ && (input_ended_ || terminal_.is_terminal())) || IsSilent();
}

}  // namespace kestrel::board::uart
