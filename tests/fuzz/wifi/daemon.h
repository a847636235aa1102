// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_FUZZ_WIFI_DAEMON_H
#define KESTREL_TESTS_FUZZ_WIFI_DAEMON_H

#include <sys/types.h>

#include <cstddef>
#include <string_view>

#include "fuzz/support/input.h"

namespace kestrel::fuzz {

/// The Wi-Fi daemon, which answers every command with the next section of the input. While one
/// exists, the library's socket calls come to it; otherwise they fail. Nothing waits: where the
/// input ends, the time for a reply is over.
///
/// A section of the form "!sE", "!cE", "!wE" or "!rE" makes the next socket, connect, write or read
/// fail instead, with the byte E as errno.
class Daemon {
 public:
  explicit Daemon(Input& input);
  ~Daemon();
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  int Socket();
  int Connect();
  ssize_t Take(std::string_view command);
  ssize_t Reply(void* buffer, size_t size);
  int Close();

 private:
  Input& input_;
  bool is_open_ = false;
};

}  // namespace kestrel::fuzz

#endif  // KESTREL_TESTS_FUZZ_WIFI_DAEMON_H
