// SPDX-License-Identifier: Apache-2.0
#include "uart_actions.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "changed_terminal.h"
#include "failure.h"
#include "interruption.h"
#include "job_control.h"
#include "output.h"
#include "uart_sender.h"
#include "uart_transfer.h"

namespace kestrelctl {
namespace {

using Kind = TransferEnd::Kind;

constexpr char kLeaveKey = 0x1D;  // Ctrl-]
constexpr char kStandardInput[] = "-";

std::string InputName(const std::string& file) {
  return file == kStandardInput ? "standard input" : file;
}

/// What is to be sent; nothing after reporting a failure.
std::optional<Descriptor> OpenInput(const std::string& file) {
  const bool is_standard_input = file == kStandardInput;
  Descriptor input(is_standard_input ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)
                                     : open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (!input.is_open()) {
    ReportFailure(InputName(file));
    return std::nullopt;
  }
  return input;
}

std::optional<uint64_t> SizeOf(const Descriptor& input) {
  struct stat status {};
  if (fstat(input.number(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return static_cast<uint64_t>(status.st_size);
}

/// What a transfer did not do that was asked for: "received 3 of 10 bytes".
std::string Shortfall(const UartSender& sender, const UartReceiver& receiver,
                      const ReceiverPlan& plan) {
  if (!sender.has_finished()) {
    return sender.Progress();
  }
  if (plan.bytes && !receiver.has_finished()) {
    return "received " + std::to_string(receiver.received()) + " of " +
           std::to_string(*plan.bytes) + " bytes";
  }
  return "";
}

/// Reports what did not come to its end. Returns the exit status.
int ReportEnd(const TransferEnd& end, const std::string& port, const std::string& shortfall) {
  switch (end.kind) {
    case Kind::kDone:
      return kDone;
    case Kind::kTime:
      return shortfall.empty() ? kDone : ReportProblem(port + ": the time is up: " + shortfall);
    case Kind::kSignal:
      return shortfall.empty() ? kDone : ReportProblem(port + ": interrupted: " + shortfall);
    case Kind::kHangUp:
      return ReportProblem(port + ": the port has hung up" +
                           (shortfall.empty() ? "" : ": " + shortfall));
    case Kind::kLostReader:
      return ReportLostReader();
    case Kind::kFailure:
      break;
  }
  errno = end.error;
  return ReportFailure(end.failed);
}

/// All those that programs send and that would end this one with the terminal raw.
Interruption SignalsThatEndATransfer() {
  return Interruption({SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM});
}

/// Leaves the terminal as it was, however it ends, before anything is reported.
TransferEnd TalkInRawMode(int port, const UartSettings& settings, bool hex) {
  const Interruption interruption = SignalsThatEndATransfer();
  const JobControl job_control;
  const ChangedTerminal terminal(STDIN_FILENO, TerminalMode::kRaw);
  if (!terminal.is_changed()) {
    return TransferEnd::Failure("standard input");
  }
  const std::string name = UartName(settings.number);
  fprintf(stderr, "%s at %u bits per second; Ctrl-] leaves\n", name.c_str(), settings.baud);
  UartSender sender(port, name, {STDIN_FILENO, "standard input", std::nullopt, kLeaveKey});
  UartReceiver receiver(port, name, {true, std::nullopt, hex});
  TransferLimits limits;
  limits.ends_with_input = true;
  Transfer transfer(port, sender, receiver, limits, interruption);
  transfer.StopAndContinueWith(job_control, terminal);
  TransferEnd end = transfer.Run();
  fputs("\n", stderr);
  return end;
}

}  // namespace

int TalkOverUart(const UartSettings& settings, bool hex) {
  const std::optional<Descriptor> port = OpenUart(settings);
  if (!port) {
    return kFailed;
  }
  const std::string name = UartName(settings.number);
  const TransferEnd end = TalkInRawMode(port->number(), settings, hex);
  return ReportEnd(end, name, "");
}

int TransferOverUart(const UartSettings& settings, const UartJob& job) {
  const std::string name = UartName(settings.number);
  std::optional<Descriptor> input;
  SenderInput sender_input;
  if (job.file) {
    input = OpenInput(*job.file);
    if (!input) {
      return kFailed;
    }
    sender_input = {input->number(), InputName(*job.file), SizeOf(*input), std::nullopt};
  }
  const std::optional<Descriptor> port = OpenUart(settings);
  if (!port) {
    return kFailed;
  }
  const Interruption interruption = SignalsThatEndATransfer();
  UartSender sender(port->number(), name, sender_input);
  UartReceiver receiver(port->number(), name, job.receiver);
  TransferLimits limits;
  limits.ends_with_input = !job.receiver.receive;
  limits.time = job.time;
  limits.shows_progress = job.file && !(job.receiver.receive && isatty(STDOUT_FILENO) == 1);
  const TransferEnd end = Transfer(port->number(), sender, receiver, limits, interruption).Run();
  return ReportEnd(end, name, Shortfall(sender, receiver, job.receiver));
}

}  // namespace kestrelctl
