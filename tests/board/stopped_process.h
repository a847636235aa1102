// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_STOPPED_PROCESS_H
#define KESTREL_TESTS_BOARD_STOPPED_PROCESS_H

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/types.h>

#include <fstream>
#include <string>

#include "raw_port.h"

namespace kestrel::test {

/// A process that does nothing until the end of the scope.
class StoppedProcess {
 public:
  explicit StoppedProcess(pid_t pid) : pid_(pid) {
    kill(pid_, SIGSTOP);
    EXPECT_TRUE(Eventually([this] { return State() == 'T'; }));
  }
  ~StoppedProcess() { kill(pid_, SIGCONT); }
  StoppedProcess(const StoppedProcess&) = delete;
  StoppedProcess& operator=(const StoppedProcess&) = delete;

 private:
  char State() const {
    std::ifstream file("/proc/" + std::to_string(pid_) + "/stat");
    std::string text;
    std::getline(file, text);
    // It follows the program's name, which stands in parentheses.
    const size_t name_end = text.rfind(") ");
    return name_end == std::string::npos ? '?' : text.at(name_end + 2);
  }

  pid_t pid_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_STOPPED_PROCESS_H
