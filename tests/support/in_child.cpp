// SPDX-License-Identifier: Apache-2.0
#include "support/in_child.h"

#include <sys/wait.h>
#include <unistd.h>

namespace kestrel::test {

int InChild(const std::function<int()>& body) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(body());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace kestrel::test
