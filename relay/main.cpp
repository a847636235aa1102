// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "eager_binding.h"
#include "host/error.h"
#include "host/event_loop.h"
#include "host/unique_fd.h"
#include "log.h"
#include "options.h"
#include "path_safety.h"
#include "relay.h"
#include "service_manager.h"

namespace {

using kestrel::board::BoardError;
using kestrel::board::EventLoop;
using kestrel::board::UniqueFd;
using kestrel::relay::GroupWriting;
using kestrel::relay::Log;
using kestrel::relay::Options;
using kestrel::relay::Relay;
using kestrel::relay::RisksOf;
using kestrel::relay::TellServiceManager;

constexpr int kUsageStatus = 2;

constexpr char kFooter[] =
    "Exit status: 0 after SIGTERM, SIGINT or SIGHUP, 1 when it cannot serve, 2 when the\n"
    "arguments are wrong.";

/// Where a standard stream is closed, a socket would get its number, and what is meant for a person
/// would go there.
void OccupyStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) < 0) {
      open("/dev/null", O_RDWR | O_CLOEXEC);
    }
  }
}

/// The signals that end the relay, which come by a descriptor from now on.
UniqueFd TakeSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    sigaddset(&signals, number);
  }
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  UniqueFd descriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
  if (!descriptor.valid()) {
    kestrel::board::ThrowErrno("signalfd");
  }
  return descriptor;
}

/// Programs tell their passphrases to whoever listens at the socket, and the relay tells them to
/// whoever receives at the supplicant's.
std::vector<std::string> RisksOf(const Options& options) {
  const auto folder_of = [](const std::string& path) {
    return std::filesystem::path(path).parent_path().string();
  };
  std::vector<std::string> texts;
  const auto add = [&texts](const std::vector<std::string>& risks, const std::string& path) {
    const std::string could = "others could take the place of " + path + ": ";
    for (const std::string& risk : risks) {
      texts.push_back(could);
      texts.back() += risk;
    }
  };
  add(RisksOf(folder_of(options.socket_path)), options.socket_path);
  add(RisksOf(options.client_folder), options.client_folder);
  // The supplicant gives its folder to the group that may use it.
  add(RisksOf(folder_of(options.supplicant_path), GroupWriting::kIsIntended),
      options.supplicant_path);
  return texts;
}

void CheckPaths(const Options& options, const Log& log) {
  for (const std::string& risk : RisksOf(options)) {
    if (options.strict) {
      throw BoardError(risk + " (--strict)");
    }
    log.Warning(risk);
  }
}

void Serve(const Options& options, const Log& log) {
  CheckPaths(options, log);
  EventLoop loop;
  const UniqueFd signals = TakeSignals();
  loop.Watch(signals.get(), [&loop] { loop.Stop(); });
  const Relay relay(loop, options, log);
  log.Info("listening at " + options.socket_path + " for the supplicant at " +
           options.supplicant_path);
  if (options.allow_all) {
    log.Warning("every program that may connect may do all that the supplicant can (--allow-all)");
  }
  TellServiceManager("READY=1");
  loop.Run();
  TellServiceManager("STOPPING=1");
  log.Info("stopping");
}

int Fail(const Options& options, const std::string& reason, int status) {
  Log(options.verbose).Error(reason);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  kestrel::relay::BindAllCalls(argv);
  OccupyStandardStreams();
  signal(SIGPIPE, SIG_IGN);
  Options options;
  CLI::App app("Passes what libkestrel says to its Wi-Fi daemon on to the stock wpa_supplicant.",
               "kestrel-wifi-relay");
  app.set_version_flag("--version", "kestrel-wifi-relay " KESTREL_VERSION);
  app.footer(kFooter);
  kestrel::relay::AddOptions(app, options);
  try {
    app.parse(argc, argv);
    Serve(options, Log(options.verbose));
    return 0;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      app.exit(error);
      return std::cout.flush() ? 0 : Fail(options, "standard output cannot be written", 1);
    }
    return Fail(options, std::string(error.what()) + " (see kestrel-wifi-relay --help)",
                kUsageStatus);
  } catch (const std::exception& error) {
    return Fail(options, error.what(), 1);
  }
}
