// SPDX-License-Identifier: Apache-2.0
// Stands where a program for another machine was built, and runs it under emulation: the program
// itself lies in
// ../arm beside this one's folder. It is linked statically, so that an object which is to be
// preloaded into the program is not tried on this one, too. The emulator, which need not be, gets
// the object as an option, for the program alone.
#define _GNU_SOURCE
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static const char kEmulator[] = KESTREL_EMULATOR;

/// Writes where the emulated program lies. False when that cannot be told.
static int FindProgram(char* program, size_t size) {
  char self[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
  if (length < 0) {
    return 0;
  }
  self[length] = '\0';
  char* name = strrchr(self, '/');
  *name++ = '\0';
  const int written = snprintf(program, size, "%s/../arm/%s", self, name);
  return written > 0 && (size_t)written < size;
}

/// What the emulator is to do with LD_PRELOAD in the program's environment, after taking the
/// variable out of its own: an option and its value. False when memory is short.
static int HandOnPreload(const char* option[2]) {
  const char* const value = getenv("LD_PRELOAD");
  option[0] = "-U";
  option[1] = "LD_PRELOAD";
  if (value == NULL) {
    return 1;
  }
  char* assignment = NULL;
  if (asprintf(&assignment, "LD_PRELOAD=%s", value) < 0) {
    return 0;
  }
  option[0] = "-E";
  option[1] = assignment;
  return unsetenv("LD_PRELOAD") == 0;
}

int main(int argc, char** argv) {
  char program[2 * PATH_MAX];
  if (!FindProgram(program, sizeof program)) {
    fprintf(stderr, "%s: the program to emulate cannot be found\n", argv[0]);
    return 127;
  }
  const char* preload[2];
  if (!HandOnPreload(preload)) {
    fprintf(stderr, "%s: no memory\n", argv[0]);
    return 127;
  }
  const char* const options[] = {
      kEmulator, "-cpu",  KESTREL_EMULATED_CPU, "-L",       KESTREL_EMULATED_ROOT,
      "-0",      argv[0], preload[0],           preload[1], program};
  const size_t count = sizeof options / sizeof options[0];
  const char* arguments[count + (size_t)argc];
  memcpy(arguments, options, sizeof options);
  // The terminating null pointer comes along.
  memcpy(arguments + count, argv + 1, (size_t)argc * sizeof argv[0]);
  execv(kEmulator, (char**)arguments);
  fprintf(stderr, "%s: %s does not start: %s\n", argv[0], kEmulator, strerror(errno));
  return 127;
}
