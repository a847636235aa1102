// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_RAW_PORT_H
#define KESTREL_TESTS_BOARD_RAW_PORT_H

#include <unistd.h>

#include <chrono>
#include <string>

namespace kestrel::test {

/// How long a test waits for what should come.
inline constexpr std::chrono::seconds kPatience{20};

/// A serial port that was opened with nothing but system calls, closed at the end of the scope.
class RawPort {
 public:
  explicit RawPort(int number);
  ~RawPort();
  RawPort(const RawPort&) = delete;
  RawPort& operator=(const RawPort&) = delete;

  int get() const { return descriptor_; }
  /// Hands on every byte as it is.
  void MakeRaw() const;

  /// Reads until `size` bytes have come or patience ends.
  std::string Receive(size_t size) const;
  void Send(const std::string& bytes) const;

 private:
  int descriptor_;
};

/// Opens "/dev/ttyS" and the number, without waiting or becoming anybody's terminal.
int OpenPort(int number);

/// So many bytes, all 256 values among them, in an order that does not repeat soon.
std::string Pattern(size_t size);

/// Waits until `condition` holds; false when patience ends first.
template <typename Condition>
bool Eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    usleep(1000);
  }
  return true;
}

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_RAW_PORT_H
