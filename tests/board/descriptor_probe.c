// SPDX-License-Identifier: Apache-2.0
// descriptor_probe PATH COMMAND: opens PATH, runs COMMAND in a shell that is not on the board,
// closes what it has open, and prints what close returns and the errno that it leaves of 4242.
#define _GNU_SOURCE  // O_CLOEXEC, unsetenv
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  const int descriptor = open(argv[1], O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0 || unsetenv("LD_PRELOAD") != 0 || system(argv[2]) != 0) {
    return 1;
  }
  errno = 4242;
  const int result = close(descriptor);
  printf("%d %d\n", result, errno);
  return 0;
}
