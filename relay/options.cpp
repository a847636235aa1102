// SPDX-License-Identifier: Apache-2.0
#include "options.h"

#include <string_view>

#include "unix_address.h"

namespace kestrel::relay {
namespace {

/// What the supplicant's client library adds to the folder: the process and a count.
constexpr std::string_view kLongestClientName = "/wpa_ctrl_4194304--2147483648";

/// The client library takes a folder that is not given from the root for no folder at all.
std::string CheckPath(const std::string& path, size_t longest) {
  if (path.empty() || path.front() != '/') {
    return "must begin with '/': " + path;
  }
  return path.size() <= longest ? ""
                                : "is longer than " + std::to_string(longest) + " bytes: " + path;
}

std::string CheckSocketPath(const std::string& path) { return CheckPath(path, kLongestSocketPath); }

std::string CheckClientFolder(const std::string& path) {
  return CheckPath(path, kLongestSocketPath - kLongestClientName.size());
}

std::string CheckMode(const std::string& mode) {
  const bool is_octal = !mode.empty() && mode.find_first_not_of("01234567") == std::string::npos;
  return is_octal && mode.size() <= 4 && std::stoul(mode, nullptr, 8) <= 0777
             ? ""
             : "must be octal, up to 0777: " + mode;
}

/// Not what the parser brings: that takes what is no number for one within the range.
template <typename Number>
CLI::Validator Between(Number least, Number most, const std::string& range) {
  return CLI::Validator(
      [=](const std::string& text) {
        Number number{};
        return CLI::detail::lexical_cast(text, number) && number >= least && number <= most
                   ? ""
                   : "must be " + range + ": " + text;
      },
      "");
}

}  // namespace

void AddOptions(CLI::App& app, Options& options) {
  app.add_option("--socket", options.socket_path, "where programs connect")
      ->type_name("PATH")
      ->check(CheckSocketPath)
      ->capture_default_str();
  app.add_option("--supplicant", options.supplicant_path,
                 "the supplicant's socket of the interface to serve")
      ->type_name("PATH")
      ->check(CheckSocketPath)
      ->capture_default_str();
  app.add_option("--client-dir", options.client_folder,
                 "where the relay's own sockets lie, to which the supplicant answers")
      ->type_name("DIR")
      ->check(CheckClientFolder)
      ->capture_default_str();
  app.add_option("--mode", options.mode, "access mode of the socket where programs connect")
      ->type_name("OCTAL")
      ->check(CheckMode)
      ->capture_default_str();
  app.add_option("--group", options.group, "its group, by name or number")->type_name("NAME");
  app.add_option("--clients", options.most_clients, "how many programs may be connected at once")
      ->type_name("N")
      ->check(Between<size_t>(1, 256, "1 to 256"))
      ->capture_default_str();
  app.add_option("--clients-per-user", options.most_clients_per_user,
                 "how many of them may belong to one user (default: three quarters)")
      ->type_name("N")
      ->check(Between<size_t>(1, 256, "1 to 256"));
  app.add_option("--timeout", options.timeout_seconds,
                 "how long the supplicant may take for an answer")
      ->type_name("SECONDS")
      ->check(Between(0.01, 3600.0, "0.01 to 3600"))
      ->capture_default_str();
  app.add_flag("--allow-all", options.allow_all,
               "pass every command on, not only those that libkestrel sends");
  app.add_flag("--strict", options.strict,
               "do not start where others could take the place of a socket");
  app.add_flag("-v,--verbose", options.verbose, "tell of every client and the names of commands");
}

}  // namespace kestrel::relay
