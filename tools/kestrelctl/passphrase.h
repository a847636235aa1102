// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_PASSPHRASE_H
#define KESTREL_TOOLS_KESTRELCTL_PASSPHRASE_H

#include <array>
#include <cstddef>

namespace kestrelctl {

/// A passphrase, in one place that is wiped at the end of the scope.
class Passphrase {
 public:
  Passphrase() = default;
  ~Passphrase();
  Passphrase(const Passphrase&) = delete;
  Passphrase& operator=(const Passphrase&) = delete;

  /// Reads until a file ends, or once a terminal has a line. False with errno when that fails.
  bool ReadFile(int descriptor);
  bool ReadLine(int terminal);

  /// 8 to 63 printable ASCII characters, but for the end of a line.
  bool IsValid() const;

  const char* text() const { return text_.data(); }
  size_t size() const { return size_; }

 private:
  /// Reads once. Returns what read does, and 0 when there is no room either.
  long ReadSome(int descriptor);
  void DropLineEnd();

  /// The longest with the end of a line, a further byte that tells what is too long, and a NUL.
  std::array<char, 63 + 2 + 1 + 1> text_{};
  size_t size_ = 0;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_PASSPHRASE_H
