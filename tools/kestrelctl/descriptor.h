// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_DESCRIPTOR_H
#define KESTREL_TOOLS_KESTRELCTL_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace kestrelctl {

/// The owner of a descriptor.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  ~Descriptor() {
    if (number_ >= 0) {
      close(number_);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }

  int number() const { return number_; }
  bool is_open() const { return number_ >= 0; }

 private:
  int number_;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_DESCRIPTOR_H
