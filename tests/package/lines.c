/* SPDX-License-Identifier: Apache-2.0 */
#include <kestrel/kestrel.h>
#include <stdio.h>
#include <unistd.h>

int main(void) {
  GpioLevel level = GpioLevel_Low;
  int line = GPIO_OpenAsOutput(4, GpioDriveMode_PushPull, GpioLevel_Low);
  if (line < 0 || GPIO_SetValue(line, GpioLevel_High) != 0 || GPIO_GetValue(line, &level) != 0) {
    return 1;
  }
  printf("C: line 4 is %s\n", level == GpioLevel_High ? "high" : "low");
  return close(line);
}
