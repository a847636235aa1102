// SPDX-License-Identifier: Apache-2.0
#include "passphrase_source.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>

#include "descriptor.h"
#include "failure.h"
#include "interruption.h"
#include "quiet_terminal.h"

namespace kestrelctl {
namespace {

constexpr char kStandardInput[] = "standard input";

bool Report(const std::string& failed) {
  ReportFailure(failed);
  return false;
}

bool IsAccepted(const Passphrase& passphrase) {
  if (!passphrase.IsValid()) {
    ReportProblem("a passphrase has 8 to 63 printable ASCII characters");
    return false;
  }
  return true;
}

enum class LineEnd { kRead, kFailed, kSignal };

/// Leaves the terminal as it was, however it ends.
LineEnd ReadLineInSilence(const std::string& question, const Interruption& interruption,
                          Passphrase& passphrase) {
  const QuietTerminal terminal(STDIN_FILENO);
  if (!terminal.is_quiet()) {
    return LineEnd::kFailed;
  }
  fputs(question.c_str(), stderr);
  pollfd events[] = {{interruption.descriptor(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
  poll(events, 2, -1);
  if (events[0].revents != 0) {
    fputs("\n", stderr);
    return LineEnd::kSignal;
  }
  return passphrase.ReadLine(STDIN_FILENO) ? LineEnd::kRead : LineEnd::kFailed;
}

}  // namespace

bool ReadPassphrase(const std::string& file, Passphrase& passphrase) {
  if (file == "-") {
    return passphrase.ReadFile(STDIN_FILENO) ? IsAccepted(passphrase) : Report(kStandardInput);
  }
  const Descriptor input(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (!input.is_open() || !passphrase.ReadFile(input.number())) {
    return Report(file);
  }
  return IsAccepted(passphrase);
}

bool AskForPassphrase(const std::string& question, Passphrase& passphrase) {
  // A stop (Ctrl-Z) would leave the terminal without echo, so it ends the question, too.
  const Interruption interruption({SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP});
  const LineEnd end = ReadLineInSilence(question, interruption, passphrase);
  if (end == LineEnd::kSignal) {
    ReportProblem("interrupted");
    return false;
  }
  interruption.LetGo();
  return end == LineEnd::kRead ? IsAccepted(passphrase) : Report(kStandardInput);
}

}  // namespace kestrelctl
