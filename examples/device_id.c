/* SPDX-License-Identifier: Apache-2.0 */
/* Prints the identifier that the device was given when it was made, in groups that can be read
 * aloud. */
#include <errno.h>
#include <kestrel/log.h>
#include <kestrel/manufacturing.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kDigitsOfGroup = 8, kGroupsOfLine = 4 };

static void PrintInGroups(const char* digits) {
  for (int group = 1; *digits != '\0'; ++group) {
    printf("%.*s%c", kDigitsOfGroup, digits, group % kGroupsOfLine == 0 ? '\n' : ' ');
    digits += kDigitsOfGroup;
  }
}

int main(void) {
  const size_t size = Manufacturing_GetDeviceIdSize();
  char* const id = malloc(size);
  if (id == NULL || Manufacturing_GetDeviceId(id, size) < 0) {
    Log_Debug("device_id: %s\n", strerror(errno));
    free(id);
    return EXIT_FAILURE;
  }
  PrintInGroups(id);
  free(id);
  return fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
