/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Blinks a LED, reads it back and follows a button.
 *
 *     gpio_blink [LED [BUTTON [ROUNDS]]]
 *
 * LED and BUTTON are line numbers (4 and 3 when not given). Without ROUNDS, or with 0, it blinks
 * until it is interrupted.
 */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <kestrel/gpio.h>
#include <kestrel/log.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

struct Lines {
  int led;
  int button;
};

static bool Failed(const char* what) {
  Log_Debug("gpio_blink: cannot %s: %s\n", what, strerror(errno));
  return false;
}

/* One argument as a number from 0 on, or `otherwise` when it is not given. */
static bool ParseNumber(int argc, char** argv, int index, int32_t otherwise, int32_t* number) {
  *number = otherwise;
  if (index >= argc) {
    return true;
  }
  char* rest = NULL;
  errno = 0;
  const long parsed = strtol(argv[index], &rest, 10);
  if (errno != 0 || rest == argv[index] || *rest != '\0' || parsed < 0 || parsed > INT32_MAX) {
    return false;
  }
  *number = (int32_t)parsed;
  return true;
}

static bool Open(GpioLineId led, GpioLineId button, struct Lines* lines) {
  lines->led = GPIO_OpenAsOutput(led, GpioDriveMode_PushPull, GpioLevel_Low);
  if (lines->led < 0) {
    return Failed("open the LED");
  }
  lines->button = GPIO_OpenAsInput(button);
  if (lines->button < 0) {
    close(lines->led);
    return Failed("open the button");
  }
  return true;
}

static void Close(const struct Lines* lines) {
  close(lines->button);
  close(lines->led);
}

static const char* Name(GpioLevel level) { return level == GpioLevel_High ? "high" : "low"; }

/* Says so when the button is not as it was in the round before. */
static void FollowButton(GpioLevel* before, GpioLevel now) {
  if (*before != now) {
    Log_Debug("the button went %s\n", Name(now));
  }
  *before = now;
}

static bool Round(const struct Lines* lines, long long round, GpioLevel* button_before) {
  const GpioLevel wanted = round % 2 != 0 ? GpioLevel_High : GpioLevel_Low;
  GpioLevel led = GpioLevel_Low;
  GpioLevel button = GpioLevel_Low;
  if (GPIO_SetValue(lines->led, wanted) != 0) {
    return Failed("drive the LED");
  }
  if (GPIO_GetValue(lines->led, &led) != 0) {
    return Failed("read the LED back");
  }
  if (GPIO_GetValue(lines->button, &button) != 0) {
    return Failed("read the button");
  }
  FollowButton(button_before, button);
  printf("round %2lld   LED %-4s -> reads %-4s   button %s\n", round, Name(wanted), Name(led),
         Name(button));
  return fflush(stdout) == 0 || Failed("write to standard output");
}

static bool Blink(const struct Lines* lines, int32_t rounds) {
  const struct timespec pause = {.tv_sec = 0, .tv_nsec = 300000000};
  GpioLevel button = GpioLevel_Low;
  for (long long round = 1; rounds == 0 || round <= rounds; ++round) {
    if (!Round(lines, round, &button)) {
      return false;
    }
    nanosleep(&pause, NULL);
  }
  return true;
}

int main(int argc, char** argv) {
  int32_t led = 0;
  int32_t button = 0;
  int32_t rounds = 0;
  if (argc > 4 || !ParseNumber(argc, argv, 1, 4, &led) || !ParseNumber(argc, argv, 2, 3, &button) ||
      !ParseNumber(argc, argv, 3, 0, &rounds)) {
    fprintf(stderr, "usage: gpio_blink [LED [BUTTON [ROUNDS]]], numbers from 0 on\n");
    return 2;
  }
  struct Lines lines = {-1, -1};
  if (!Open(led, button, &lines)) {
    return EXIT_FAILURE;
  }
  Log_Debug("blinking line %d, following line %d\n", (int)led, (int)button);
  const bool done = Blink(&lines, rounds);
  Close(&lines);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
