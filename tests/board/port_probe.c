// SPDX-License-Identifier: Apache-2.0
// port_probe PATH TEXT: opens a serial port of the board raw, sends TEXT, says "ready", prints
// what comes and sends TEXT again after the first of it. With "-" for TEXT it sends back whatever
// comes.
#define _DEFAULT_SOURCE
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

static void SendAll(int port, const char* bytes, size_t size) {
  while (size > 0) {
    const ssize_t sent = write(port, bytes, size);
    if (sent <= 0) {
      return;
    }
    bytes += sent;
    size -= (size_t)sent;
  }
}

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  const int port = open(argv[1], O_RDWR | O_NOCTTY);
  struct termios settings;
  if (tcgetattr(port, &settings) != 0) {
    return 1;
  }
  cfmakeraw(&settings);
  tcsetattr(port, TCSANOW, &settings);
  const int echoes = strcmp(argv[2], "-") == 0;
  if (!echoes) {
    SendAll(port, argv[2], strlen(argv[2]));
  }
  puts("ready");
  fflush(stdout);
  char buffer[4096];
  ssize_t count = 0;
  for (int answers = 0; (count = read(port, buffer, sizeof buffer)) > 0; ++answers) {
    if (echoes) {
      SendAll(port, buffer, (size_t)count);
      continue;
    }
    if (answers == 0) {
      SendAll(port, argv[2], strlen(argv[2]));
    }
    fwrite(buffer, 1, (size_t)count, stdout);
    fflush(stdout);
  }
  return 0;
}
