/* SPDX-License-Identifier: Apache-2.0 */
/* A program that knows nothing of boards: opens line 4 as an output that is high, writes its level
 * to standard output, and returns its first argument as its exit status. With "wait" it waits for
 * SIGTERM instead. */
#define _DEFAULT_SOURCE /* usleep and sigaction */
#include <errno.h>
#include <kestrel/gpio.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static volatile sig_atomic_t terminated;

static void on_terminate(int number) {
  (void)number;
  terminated = 1;
}

static void wait_for_signal(void) {
  struct sigaction action = {0};
  action.sa_handler = on_terminate;
  sigaction(SIGTERM, &action, NULL);
  puts("waiting");
  fflush(stdout);
  while (!terminated) {
    usleep(1000);
  }
  puts("terminated");
}

int main(int argc, char** argv) {
  const int line = GPIO_OpenAsOutput(4, GpioDriveMode_PushPull, GpioLevel_High);
  GpioLevel level = GpioLevel_Low;
  if (line < 0 || GPIO_GetValue(line, &level) != 0) {
    printf("errno %d\n", errno);
    return 1;
  }
  printf("level %d\n", level);
  fflush(stdout);
  if (argc > 1 && strcmp(argv[1], "wait") == 0) {
    wait_for_signal();
    return 0;
  }
  return argc > 1 ? atoi(argv[1]) : 0;
}
