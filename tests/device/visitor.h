// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_DEVICE_VISITOR_H
#define KESTREL_TESTS_DEVICE_VISITOR_H

#include <fcntl.h>
#include <unistd.h>

#include "rig.h"

namespace kestrel::test {

/// A port as an outsider opens it: without the library, without changing anything.
class Visitor {
 public:
  explicit Visitor(uint32_t number)
      : port_(open(PortPath(number).c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}
  ~Visitor() { close(port_); }
  Visitor(const Visitor&) = delete;
  Visitor& operator=(const Visitor&) = delete;

  int get() const { return port_; }

 private:
  int port_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_DEVICE_VISITOR_H
