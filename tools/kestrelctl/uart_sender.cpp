// SPDX-License-Identifier: Apache-2.0
#include "uart_sender.h"

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace kestrelctl {
namespace {

/// From one look at the driver's queue to the next; no event tells that it is empty.
constexpr int kLookMilliseconds = 10;

/// How long somebody who leaves waits for what was typed last, should the port have stopped.
constexpr std::chrono::seconds kLeaveTime(1);

}  // namespace

UartSender::UartSender(int port, std::string port_name, SenderInput input)
    : port_(port),
      port_name_(std::move(port_name)),
      input_(std::move(input)),
      is_open_(input_.descriptor >= 0),
      has_finished_(!is_open_) {}

UartSender::~UartSender() {
  if (!has_drained_) {
    tcflush(port_, TCOFLUSH);
  }
}

std::string UartSender::Progress() const {
  const std::string of = input_.size ? " of " + std::to_string(*input_.size) : "";
  return "sent " + std::to_string(sent_) + of + " bytes";
}

int UartSender::TimeToWait() const {
  return IsWaitingForDriver() || leave_by_ ? kLookMilliseconds : -1;
}

void UartSender::Take(const std::string& bytes) {
  const size_t end = input_.leave_key ? bytes.find(*input_.leave_key) : std::string::npos;
  pending_ = bytes.substr(0, end);
  if (end != std::string::npos) {
    is_open_ = false;
    leave_by_ = Clock::now() + kLeaveTime;
  }
}

std::optional<TransferEnd> UartSender::Read() {
  std::array<char, 4096> buffer;
  const ssize_t count = read(input_.descriptor, buffer.data(), buffer.size());
  if (count > 0) {
    Take(std::string(buffer.data(), static_cast<size_t>(count)));
  } else if (count == 0) {
    is_open_ = false;
  } else if (!IsToBeTriedAgain(errno)) {
    return TransferEnd::Failure(input_.name);
  }
  return std::nullopt;
}

std::optional<TransferEnd> UartSender::Write() {
  const ssize_t count = write(port_, pending_.data(), pending_.size());
  if (count > 0) {
    has_drained_ = false;
    sent_ += static_cast<uint64_t>(count);
    pending_.erase(0, static_cast<size_t>(count));
  } else if (count < 0 && !IsToBeTriedAgain(errno)) {
    return TransferEnd::Failure(port_name_);
  }
  return std::nullopt;
}

std::optional<TransferEnd> UartSender::Finish() {
  if (leave_by_ && Clock::now() >= *leave_by_) {
    has_finished_ = true;
    return std::nullopt;
  }
  int queued = 0;
  if (!IsWaitingForDriver() || (ioctl(port_, TIOCOUTQ, &queued) == 0 && queued > 0)) {
    return std::nullopt;
  }
  // With an empty queue this waits for no more than the hardware's own few bytes. Called earlier,
  // it would wait for a receiver that has stopped the flow, and no signal could end that.
  if (tcdrain(port_) != 0 && errno != EINTR) {
    return TransferEnd::Failure(port_name_);
  }
  has_drained_ = true;
  has_finished_ = true;
  return std::nullopt;
}

}  // namespace kestrelctl
