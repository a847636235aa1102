/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Sends back whatever a serial port receives.
 *
 *     uart_echo [UART [BYTES]]
 *
 * UART is the number of the port (0 when not given). It ends after so many bytes; without BYTES, or
 * with 0, when the port hangs up or it is interrupted.
 */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <kestrel/log.h>
#include <kestrel/uart.h>
#include <poll.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

static bool Failed(const char* what) {
  Log_Debug("uart_echo: cannot %s: %s\n", what, strerror(errno));
  return false;
}

/* One argument as a number from 0 on, or `number` as it was when it is not given. */
static bool ParseNumber(int argc, char** argv, int index, uint32_t* number) {
  if (index >= argc) {
    return true;
  }
  char* rest = NULL;
  errno = 0;
  const long long parsed = strtoll(argv[index], &rest, 10);
  if (errno != 0 || rest == argv[index] || *rest != '\0' || parsed < 0 || parsed > UINT32_MAX) {
    return false;
  }
  *number = (uint32_t)parsed;
  return true;
}

static int Open(uint32_t uart) {
  UartConfigRecord config;
  if (z__UART_InitConfig(&config, UART_CONFIG_VERSION) != 0) {
    return -1;
  }
  config.baudRate = 115200;
  /* A port that does not take its settings leaves errno as it was. */
  errno = 0;
  return z__UART_Open(uart, &config);
}

/* A port does not block, so what waits is poll. Returns false when the port has hung up. */
static bool WaitFor(int port, short event) {
  struct pollfd wait = {.fd = port, .events = event, .revents = 0};
  while (poll(&wait, 1, -1) < 0 && errno == EINTR) {
  }
  return (wait.revents & event) != 0;
}

/* A port takes as much as its driver has room for, which may be less than there is. */
static bool SendAll(int port, const char* bytes, size_t count) {
  while (count > 0) {
    const ssize_t sent = write(port, bytes, count);
    if (sent > 0) {
      bytes += sent;
      count -= (size_t)sent;
    } else if (sent < 0 && errno != EAGAIN && errno != EINTR) {
      return Failed("send");
    } else if (!WaitFor(port, POLLOUT)) {
      errno = EIO;
      return Failed("send");
    }
  }
  return true;
}

/* Echoes up to `limit` bytes, without an end when it is 0. Counts them in `echoed`. */
static bool Echo(int port, uint32_t limit, uint32_t* echoed) {
  char buffer[256];
  while ((limit == 0 || *echoed < limit) && WaitFor(port, POLLIN)) {
    const uint32_t left = limit - *echoed;
    const size_t wanted = limit == 0 || left > sizeof buffer ? sizeof buffer : left;
    const ssize_t received = read(port, buffer, wanted);
    /* That there is nothing, although poll said that there was something, tells that the port has
     * hung up; so does EIO. */
    if (received == 0 || (received < 0 && errno == EIO)) {
      return true;
    }
    if (received < 0 && errno != EAGAIN && errno != EINTR) {
      return Failed("receive");
    }
    if (received > 0 && !SendAll(port, buffer, (size_t)received)) {
      return false;
    }
    *echoed += received > 0 ? (uint32_t)received : 0;
  }
  return true;
}

int main(int argc, char** argv) {
  uint32_t uart = 0;
  uint32_t limit = 0;
  if (argc > 3 || !ParseNumber(argc, argv, 1, &uart) || !ParseNumber(argc, argv, 2, &limit)) {
    fprintf(stderr, "usage: uart_echo [UART [BYTES]], numbers from 0 on\n");
    return 2;
  }
  const int port = Open(uart);
  if (port < 0) {
    errno = errno != 0 ? errno : EIO;
    Failed("open the port");
    return EXIT_FAILURE;
  }
  Log_Debug("echoing on UART %u\n", (unsigned)uart);
  uint32_t echoed = 0;
  const bool done = Echo(port, limit, &echoed) && (tcdrain(port) == 0 || errno == EIO);
  close(port);
  Log_Debug("echoed %u bytes\n", (unsigned)echoed);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
