// SPDX-License-Identifier: Apache-2.0
#include "passphrase_source.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>

#include "changed_terminal.h"
#include "descriptor.h"
#include "failure.h"
#include "interruption.h"
#include "job_control.h"

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

/// Waits for a line to be typed or for a signal that ends the question, with stops in between.
bool WaitForLine(const Interruption& interruption, const JobControl& job_control,
                 const ChangedTerminal& terminal, const std::string& question) {
  for (;;) {
    fputs(question.c_str(), stderr);
    pollfd events[] = {{interruption.descriptor(), POLLIN, 0},
                       {job_control.descriptor(), POLLIN, 0},
                       {STDIN_FILENO, POLLIN, 0}};
    poll(events, 3, -1);
    if (events[1].revents == 0) {
      return events[0].revents == 0;
    }
    job_control.Heed(terminal);
    fputs("\n", stderr);
  }
}

/// Leaves the terminal as it was, however it ends.
LineEnd ReadLineInSilence(const std::string& question, const Interruption& interruption,
                          Passphrase& passphrase) {
  const JobControl job_control;
  const ChangedTerminal terminal(STDIN_FILENO, TerminalMode::kQuiet);
  if (!terminal.is_changed()) {
    return LineEnd::kFailed;
  }
  if (!WaitForLine(interruption, job_control, terminal, question)) {
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
  const Interruption interruption({SIGINT, SIGTERM, SIGHUP, SIGQUIT});
  const LineEnd end = ReadLineInSilence(question, interruption, passphrase);
  if (end == LineEnd::kSignal) {
    ReportProblem("interrupted");
    return false;
  }
  interruption.LetGo();
  return end == LineEnd::kRead ? IsAccepted(passphrase) : Report(kStandardInput);
}

}  // namespace kestrelctl
