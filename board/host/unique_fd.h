// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_UNIQUE_FD_H
#define KESTREL_BOARD_HOST_UNIQUE_FD_H

#include <unistd.h>

#include <utility>

namespace kestrel::board {

/// The owner of a descriptor.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int descriptor) : descriptor_(descriptor) {}
  UniqueFd(UniqueFd&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~UniqueFd() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }

  int get() const { return descriptor_; }
  bool valid() const { return descriptor_ >= 0; }

 private:
  int descriptor_ = -1;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_UNIQUE_FD_H
