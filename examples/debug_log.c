/* SPDX-License-Identifier: Apache-2.0 */
/* Writes debug text: directly, and through a wrapper that gives every message an area. */
#include <kestrel/log.h>
#include <stdarg.h>
#include <stdlib.h>

KESTREL_PRINTF(2, 3)
static int LogFrom(const char* area, const char* fmt, ...) {
  if (Log_Debug("[%s] ", area) != 0) {
    return -1;
  }
  va_list args;
  va_start(args, fmt);
  const int result = Log_DebugVarArgs(fmt, args);
  va_end(args);
  return result;
}

int main(void) {
  /* The library adds nothing to the text, so the newline is ours to write. */
  if (Log_Debug("starting with %d sensors\n", 2) != 0) {
    return EXIT_FAILURE;
  }
  if (LogFrom("heating", "%.1f degrees, %s\n", 21.5, "valve open") != 0) {
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
