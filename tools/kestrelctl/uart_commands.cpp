// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <memory>
#include <optional>
#include <string>

#include "arguments.h"
#include "command_groups.h"
#include "library_diagnostics.h"
#include "uart_actions.h"

namespace kestrelctl {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  kestrelctl uart 0 --baud 9600                      type and see what comes; Ctrl-] leaves\n"
    "  kestrelctl uart 0 --send firmware.bin --flow rts-cts\n"
    "  kestrelctl uart 0 --receive --hex                  until Ctrl-C\n"
    "  echo AT | kestrelctl uart 0 --send - --receive --bytes 2 --timeout 1.5";

struct UartArguments {
  std::string number;
  std::string baud = "115200";
  std::string flow = "none";
  std::optional<std::string> send;
  bool receive = false;
  std::optional<std::string> bytes;
  std::optional<std::string> timeout;
  bool hex = false;
  bool verbose = false;

  bool is_interactive() const { return !send && !receive; }
};

/// Refuses options that do not go together.
void CheckTogether(const UartArguments& arguments) {
  if (!arguments.receive && (arguments.bytes || arguments.timeout)) {
    Refuse("--bytes and --timeout tell how long to receive: add --receive");
  }
  if (!arguments.receive && arguments.hex && arguments.send) {
    Refuse("--hex shows what is received: add --receive");
  }
  if (arguments.is_interactive() && isatty(STDIN_FILENO) != 1) {
    Refuse("standard input is no terminal: give --send FILE, --send - or --receive");
  }
}

UartJob JobOf(const UartArguments& arguments) {
  UartJob job;
  job.file = arguments.send;
  job.receiver.receive = arguments.receive;
  job.receiver.hex = arguments.hex;
  if (arguments.bytes) {
    job.receiver.bytes = ParseByteCount(*arguments.bytes);
  }
  if (arguments.timeout) {
    job.time = ParseSeconds(*arguments.timeout, "receive");
  }
  return job;
}

Action Prepare(const UartArguments& arguments) {
  const UartSettings settings{ParseUart(arguments.number), ParseBaud(arguments.baud),
                              ParseFlow(arguments.flow)};
  const UartJob job = JobOf(arguments);
  CheckTogether(arguments);
  if (arguments.is_interactive()) {
    return [settings, hex = arguments.hex] { return TalkOverUart(settings, hex); };
  }
  return [settings, job] { return TransferOverUart(settings, job); };
}

void AddOptions(CLI::App& command, UartArguments& arguments) {
  command.add_option("NUMBER", arguments.number, "Number of the port, 0 to 255")
      ->required()
      ->type_name("");
  command.add_option("--baud", arguments.baud, "Bits per second (default 115200)")
      ->type_name("BAUD");
  command.add_option("--flow", arguments.flow, "Flow control: none (default), rts-cts or xon-xoff")
      ->type_name("FLOW");
  command.add_option("--send", arguments.send, "Send a file, or standard input for -")
      ->type_name("FILE");
  command.add_flag("--receive", arguments.receive, "Write what comes to standard output");
  command.add_option("--bytes", arguments.bytes, "Receive so many bytes")->type_name("N");
  command.add_option("--timeout", arguments.timeout, "Receive no longer, once all has been sent")
      ->type_name("SECONDS");
  command.add_flag("--hex", arguments.hex, "Show what is received in hexadecimal");
  command.add_flag("-v,--verbose", arguments.verbose, "Show the library's own diagnostics, too");
}

}  // namespace

void AddUartCommands(CLI::App& program, Action& action) {
  const auto arguments = std::make_shared<UartArguments>();
  CLI::App* const command =
      program.add_subcommand("uart", "Send and receive over a serial port, or type at it");
  command->footer(kExamples);
  AddOptions(*command, *arguments);
  command->callback([arguments, &action] {
    ShowLibraryDiagnostics(arguments->verbose);
    action = Prepare(*arguments);
  });
}

}  // namespace kestrelctl
