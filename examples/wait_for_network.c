/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Waits until the device's networking is ready, as an application does before it connects.
 *
 *     wait_for_network [SECONDS]
 *
 * It gives up after so many seconds (30 when not given).
 */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <kestrel/log.h>
#include <kestrel/networking.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

static bool ParseSeconds(const char* text, long* seconds) {
  char* rest = NULL;
  errno = 0;
  *seconds = strtol(text, &rest, 10);
  return errno == 0 && rest != text && *rest == '\0' && *seconds >= 0 && *seconds <= 86400;
}

/* A device that has just started may not have the status file yet. That is no answer, and with
 * EBUSY the library says what to do: ask again. */
static bool IsReady(void) {
  bool ready = false;
  return Networking_IsNetworkingReady(&ready) == 0 && ready;
}

static bool WaitUntilReady(long seconds) {
  /* Each failure to ask prints a line, so it is not asked more often than a person would read. */
  const struct timespec pause = {.tv_sec = 1, .tv_nsec = 0};
  bool ready = IsReady();
  for (long asked = 0; !ready && asked < seconds; ++asked) {
    nanosleep(&pause, NULL);
    ready = IsReady();
  }
  return ready;
}

int main(int argc, char** argv) {
  long seconds = 30;
  if (argc > 2 || (argc == 2 && !ParseSeconds(argv[1], &seconds))) {
    fprintf(stderr, "usage: wait_for_network [SECONDS], at most 86400\n");
    return 2;
  }
  if (!WaitUntilReady(seconds)) {
    Log_Debug("wait_for_network: not ready after %ld seconds\n", seconds);
    return EXIT_FAILURE;
  }
  Log_Debug("networking is ready\n");
  return EXIT_SUCCESS;
}
