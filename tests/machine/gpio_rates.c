/* SPDX-License-Identifier: Apache-2.0 */
/* How often a second a line can be set and read: through the library, through libgpiod and by the
   kernel's own calls. All take turns in each round, so that what else the machine does meets all.
 */
#include <fcntl.h>
#include <gpiod.h>
#include <kestrel/gpio.h>
#include <linux/gpio.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <time.h>
#include <unistd.h>

enum { kRounds = 15, kCalls = 1000, kWays = 3, kChipLine = 10 };

static const char* const kNames[kWays] = {"library", "libgpiod", "ioctl"};

static int library_line;
static struct gpiod_line* libgpiod_line;
static int bare_line;

static bool library_set(int level) { return GPIO_SetValue(library_line, (GpioLevel)level) == 0; }

static bool library_get(int level) {
  GpioLevel seen = 0;
  return GPIO_GetValue(library_line, &seen) == 0 && seen == level;
}

static bool libgpiod_set(int level) { return gpiod_line_set_value(libgpiod_line, level) == 0; }

static bool libgpiod_get(int level) { return gpiod_line_get_value(libgpiod_line) == level; }

static bool bare_set(int level) {
  struct gpiohandle_data data = {.values = {(unsigned char)level}};
  return ioctl(bare_line, GPIOHANDLE_SET_LINE_VALUES_IOCTL, &data) == 0;
}

static bool bare_get(int level) {
  struct gpiohandle_data data = {.values = {0}};
  return ioctl(bare_line, GPIOHANDLE_GET_LINE_VALUES_IOCTL, &data) == 0 && data.values[0] == level;
}

static int open_bare_line(unsigned line) {
  struct gpiohandle_request request = {.lines = 1, .flags = GPIOHANDLE_REQUEST_OUTPUT};
  request.lineoffsets[0] = line;
  const int chip = open("/dev/gpiochip0", O_RDONLY | O_CLOEXEC);
  const int failure = ioctl(chip, GPIO_GET_LINEHANDLE_IOCTL, &request);
  close(chip);
  return failure == 0 ? request.fd : -1;
}

static bool open_lines(void) {
  library_line = GPIO_OpenAsOutput(kChipLine, GpioDriveMode_PushPull, GpioLevel_Low);
  struct gpiod_chip* chip = gpiod_chip_open("/dev/gpiochip0");
  libgpiod_line = chip == NULL ? NULL : gpiod_chip_get_line(chip, kChipLine + 1);
  bare_line = open_bare_line(kChipLine + 2);
  return library_line >= 0 && bare_line >= 0 && libgpiod_line != NULL &&
         gpiod_line_request_output(libgpiod_line, "gpio_rates", 0) == 0;
}

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return (double)time.tv_sec + (double)time.tv_nsec * 1e-9;
}

/* Calls a second. A call that fails, or sees another level than it should, ends the program. */
static double rate_of(bool (*call)(int level), bool alternate) {
  const double began = now();
  for (int i = 0; i < kCalls; ++i) {
    if (!call(alternate ? i % 2 : 1)) {
      perror("gpio-rates: a call failed");
      exit(1);
    }
  }
  return kCalls / (now() - began);
}

static int compare(const void* left, const void* right) {
  const double a = *(const double*)left;
  const double b = *(const double*)right;
  return (a > b) - (a < b);
}

static void measure(const char* name, bool (*const calls[kWays])(int level), bool alternate) {
  static double rates[kWays][kRounds];
  for (int round = 0; round < kRounds; ++round) {
    for (int way = 0; way < kWays; ++way) {
      rates[way][round] = rate_of(calls[way], alternate);
    }
  }
  double median[kWays];
  printf("%-4s", name);
  for (int way = 0; way < kWays; ++way) {
    qsort(rates[way], kRounds, sizeof(double), compare);
    median[way] = rates[way][kRounds / 2];
    printf(" %9.0f", median[way]);
  }
  printf(" %14.2f %17.2f\n", median[0] / median[2], median[0] / median[1]);
}

int main(void) {
  static bool (*const kSet[kWays])(int) = {library_set, libgpiod_set, bare_set};
  static bool (*const kGet[kWays])(int) = {library_get, libgpiod_get, bare_get};
  if (!open_lines()) {
    perror("gpio-rates: a line cannot be opened");
    return 1;
  }
  printf("GPIO calls a second, the median of %d rounds of %d calls\n    ", kRounds, kCalls);
  for (int way = 0; way < kWays; ++way) {
    printf(" %9s", kNames[way]);
  }
  printf(" %14s %17s\n", "library:ioctl", "library:libgpiod");
  measure("set", kSet, true);
  for (int way = 0; way < kWays; ++way) {
    kSet[way](1);
  }
  measure("get", kGet, false);
  return 0;
}
