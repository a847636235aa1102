// SPDX-License-Identifier: Apache-2.0
#include <kestrel/networking.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "arguments.h"
#include "command_groups.h"
#include "failure.h"
#include "family_command.h"
#include "interruption.h"
#include "library_diagnostics.h"
#include "output.h"
#include "progress_line.h"

namespace kestrelctl {
namespace {

using Clock = std::chrono::steady_clock;

/// From one question to the next.
constexpr Milliseconds kPause(100);

/// Whether networking is ready; or nothing, and why.
struct Answer {
  std::optional<bool> is_ready;
  int error = 0;
};

Answer AskNetworking() {
  bool is_ready = false;
  if (CallLibrary([&] { return Networking_IsNetworkingReady(&is_ready); }) != 0) {
    return {std::nullopt, errno};
  }
  return {is_ready, 0};
}

long Seconds(Clock::duration time) {
  return static_cast<long>(std::chrono::duration_cast<std::chrono::seconds>(time).count());
}

/// Asks until networking is ready, the time is up or a signal comes. A status file that is missing
/// may still come, so a question without an answer is asked again as well.
Answer WaitForNetworking(Milliseconds limit) {
  const Interruption interruption;
  ProgressLine progress;
  const Clock::time_point start = Clock::now();
  Answer answer = AskNetworking();
  while (answer.is_ready != true && Clock::now() - start < limit) {
    progress.Show("waiting for networking: " + std::to_string(Seconds(Clock::now() - start)) +
                  " of " + std::to_string(Seconds(limit)) + " seconds");
    const auto left = std::chrono::ceil<Milliseconds>(std::max(limit - (Clock::now() - start), {}));
    if (interruption.WaitFor(std::min(kPause, left)) != WaitEnd::kTime) {
      return answer;
    }
    answer = AskNetworking();
  }
  return answer;
}

int TellNetworking(Milliseconds limit, Format format) {
  const auto [is_ready, error] = limit.count() > 0 ? WaitForNetworking(limit) : AskNetworking();
  if (!is_ready) {
    errno = error;
    ReportFailure("networking", {{EBUSY,
                                  "its status file is missing or cannot be read; --verbose "
                                  "shows why"}});
    return kNoAnswer;
  }
  const std::string text = *is_ready ? "ready" : "not ready";
  const std::string json = nlohmann::json{{"ready", *is_ready}}.dump();
  if (!Print((format == Format::kText ? text : json) + "\n")) {
    return kNoAnswer;
  }
  return *is_ready ? kDone : kFailed;
}

struct NetworkingArguments : CommonArguments {
  std::string wait = "0";
};

}  // namespace

void AddNetworkingCommands(CLI::App& program, Action& action) {
  const Prepare<NetworkingArguments> prepare = [](const NetworkingArguments& arguments) -> Action {
    return [limit = ParseSeconds(arguments.wait, "wait"), format = arguments.format()] {
      return TellNetworking(limit, format);
    };
  };
  const FamilyCommand<NetworkingArguments> network = AddCommand(
      program, "network", "Tell whether the device's networking is ready",
      "  kestrelctl network\n"
      "  kestrelctl network --wait 30 && ./start-service\n"
      "\n"
      "Exit status: 0 ready, 1 not ready, 2 the arguments are wrong, 3 there is no answer.",
      prepare, action);
  network.app
      ->add_option("--wait", network.arguments.wait,
                   "Ask again until networking is ready, for so long")
      ->type_name("SECONDS");
}

}  // namespace kestrelctl
