// SPDX-License-Identifier: Apache-2.0
#include "uart_transfer.h"

#include <unistd.h>

#include <algorithm>

namespace kestrelctl {
namespace {

using Kind = TransferEnd::Kind;

constexpr short kGone = POLLERR | POLLHUP | POLLNVAL;
constexpr std::chrono::seconds kTimeWithoutProgress(1);
constexpr Milliseconds kProgressPause(200);

/// The smaller of two times for poll, in which -1 is for ever.
int Shorter(int one, int other) { return one < 0 ? other : other < 0 ? one : std::min(one, other); }

int MillisecondsUntil(std::chrono::steady_clock::time_point time) {
  const auto left = std::chrono::ceil<Milliseconds>(time - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<Milliseconds::rep>(0, left.count()));
}

/// What is true of a descriptor at this moment.
short EventsOf(int descriptor) {
  pollfd events{descriptor, POLLIN, 0};
  poll(&events, 1, 0);
  return events.revents;
}

}  // namespace

Transfer::Transfer(int port, UartSender& sender, UartReceiver& receiver,
                   const TransferLimits& limits, const Interruption& interruption)
    : port_(port),
      sender_(sender),
      receiver_(receiver),
      limits_(limits),
      interruption_(interruption),
      next_progress_(Clock::now() + kTimeWithoutProgress) {}

void Transfer::StopAndContinueWith(const JobControl& job_control, const ChangedTerminal& terminal) {
  job_control_ = &job_control;
  terminal_ = &terminal;
}

void Transfer::FindEnd() {
  const bool has_received_all = limits_.ends_with_input || receiver_.has_finished();
  if (sender_.has_finished() && limits_.time && !time_is_up_) {
    time_is_up_ = Clock::now() + *limits_.time;
  }
  if (sender_.has_finished() && has_received_all) {
    end_ = TransferEnd{Kind::kDone};
  } else if (has_hung_up_) {
    end_ = TransferEnd{Kind::kHangUp};
  } else if (IsTimeUp()) {
    end_ = TransferEnd{Kind::kTime};
  }
  if (end_) {
    receiver_.EndLine();
  }
}

Transfer::Events Transfer::EventsToWaitFor() const {
  const bool reads = receiver_.WantsToRead();
  const bool writes = receiver_.WantsToWrite();
  short port_events = reads ? POLLIN : 0;
  if (sender_.WantsToWrite()) {
    port_events |= POLLOUT;
  }
  const short output_events = writes ? POLLOUT : 0;
  return {{{interruption_.descriptor(), POLLIN, 0},
           {end_ ? -1 : sender_.WantsToRead(), POLLIN, 0},
           {end_ ? -1 : port_, port_events, 0},
           // A reader that has gone is of interest while there is something for it to come.
           {reads || writes ? STDOUT_FILENO : -1, output_events, 0},
           {job_control_ == nullptr ? -1 : job_control_->descriptor(), POLLIN, 0}}};
}

bool Transfer::ShowsProgress() const {
  return limits_.shows_progress && progress_.is_visible() && !sender_.has_finished();
}

int Transfer::TimeToWait() const {
  int time = Shorter(sender_.TimeToWait(), receiver_.TimeToWait());
  if (time_is_up_) {
    time = Shorter(time, MillisecondsUntil(*time_is_up_));
  }
  if (ShowsProgress()) {
    time = Shorter(time, MillisecondsUntil(next_progress_));
  }
  return end_ ? -1 : time;
}

std::optional<TransferEnd> Transfer::MoveBytes(short events) {
  std::optional<TransferEnd> end;
  if ((events & POLLIN) != 0) {
    end = receiver_.Read();
  }
  if (!end && (events & POLLOUT) != 0) {
    end = sender_.Write();
  }
  return end;
}

void Transfer::NoteHangUp() {
  receiver_.ReadRest();
  has_hung_up_ = true;
}

std::optional<TransferEnd> Transfer::UnlessHungUp(const std::optional<TransferEnd>& end) {
  if (end && (EventsOf(port_) & kGone) != 0) {
    NoteHangUp();
    return std::nullopt;
  }
  return end;
}

std::optional<TransferEnd> Transfer::HandlePort(short events) {
  if ((events & kGone) != 0) {
    NoteHangUp();
    return std::nullopt;
  }
  return UnlessHungUp(MoveBytes(events));
}

std::optional<TransferEnd> Transfer::HandleOutput(short events) {
  if ((events & kGone) != 0) {
    return TransferEnd{Kind::kLostReader};
  }
  return (events & POLLOUT) != 0 ? receiver_.Write() : std::nullopt;
}

std::optional<TransferEnd> Transfer::Handle(const Events& events) {
  if (events[kJobControl].revents != 0) {
    job_control_->Heed(*terminal_);
  }
  std::optional<TransferEnd> end;
  if (events[kInput].revents != 0) {
    end = sender_.Read();
  }
  if (!end) {
    end = HandlePort(events[kPort].revents);
  }
  if (!end) {
    end = HandleOutput(events[kOutput].revents);
  }
  if (!end && !end_) {
    end = UnlessHungUp(sender_.Finish());
  }
  // Ctrl-C ends the reader of standard output as well, which is then no failure; the signal may
  // come a little later.
  return EventsOf(interruption_.descriptor()) != 0 ? TransferEnd{Kind::kSignal} : end;
}

void Transfer::ShowProgress() {
  if (!ShowsProgress()) {
    progress_.Clear();
  } else if (Clock::now() >= next_progress_) {
    next_progress_ = Clock::now() + kProgressPause;
    progress_.Show(sender_.Progress());
  }
}

TransferEnd Transfer::Ended(const TransferEnd& end) {
  progress_.Clear();
  receiver_.EndLine();
  receiver_.WriteRest();
  return end;
}

TransferEnd Transfer::Run() {
  FindEnd();
  while (!end_ || receiver_.WantsToWrite()) {
    Events events = EventsToWaitFor();
    poll(events.data(), events.size(), TimeToWait());
    if (const std::optional<TransferEnd> end = Handle(events)) {
      return Ended(*end);
    }
    receiver_.ShowPause();
    ShowProgress();
    if (!end_) {
      FindEnd();
    }
  }
  return Ended(*end_);
}

}  // namespace kestrelctl
