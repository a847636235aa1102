// SPDX-License-Identifier: Apache-2.0
#include "uart_receiver.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <utility>

namespace kestrelctl {
namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr size_t kMostPending = 64UL * 1024;
constexpr Milliseconds kPause(100);
constexpr int kPatienceMilliseconds = 1000;

}  // namespace

UartReceiver::UartReceiver(int port, std::string port_name, const ReceiverPlan& plan)
    : port_(port),
      port_name_(std::move(port_name)),
      plan_(plan),
      shows_pauses_(isatty(STDOUT_FILENO) == 1) {}

bool UartReceiver::WantsToRead() const {
  return plan_.receive && !has_finished() && pending_.size() < kMostPending;
}

int UartReceiver::TimeToWait() const {
  if (!shows_pauses_ || !hex_.has_begun_line()) {
    return -1;
  }
  const auto left = std::chrono::ceil<Milliseconds>(latest_ + kPause - Clock::now());
  return static_cast<int>(std::max<Milliseconds::rep>(0, left.count()));
}

void UartReceiver::Take(std::string_view bytes) {
  received_ += bytes.size();
  latest_ = Clock::now();
  pending_ += plan_.hex ? hex_.Add(bytes) : std::string(bytes);
}

ssize_t UartReceiver::ReadSome() {
  std::array<char, 4096> buffer;
  const uint64_t wanted = plan_.bytes ? *plan_.bytes - received_ : buffer.size();
  const ssize_t count =
      read(port_, buffer.data(), static_cast<size_t>(std::min<uint64_t>(wanted, buffer.size())));
  if (count > 0) {
    Take({buffer.data(), static_cast<size_t>(count)});
  }
  return count;
}

std::optional<TransferEnd> UartReceiver::Read() {
  if (ReadSome() < 0 && !IsToBeTriedAgain(errno)) {
    return TransferEnd::Failure(port_name_);
  }
  return std::nullopt;
}

void UartReceiver::ReadRest() {
  while (plan_.receive && !has_finished() && ReadSome() > 0) {
  }
}

std::optional<TransferEnd> UartReceiver::Write() {
  // A pipe that is ready takes so many without making the program wait.
  const ssize_t count =
      write(STDOUT_FILENO, pending_.data(), std::min<size_t>(pending_.size(), PIPE_BUF));
  if (count >= 0) {
    pending_.erase(0, static_cast<size_t>(count));
  } else if (!IsToBeTriedAgain(errno)) {
    return TransferEnd::Failure("standard output");
  }
  return std::nullopt;
}

void UartReceiver::ShowPause() {
  if (TimeToWait() == 0) {
    EndLine();
  }
}

void UartReceiver::WriteRest() {
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  while (WantsToWrite() && poll(&output, 1, kPatienceMilliseconds) > 0 && !Write()) {
  }
}

}  // namespace kestrelctl
