/* SPDX-License-Identifier: Apache-2.0 */
/* Compiled as C11 and as C++11: every type, constant and function that applications are compiled
 * against. What does not compile or fails here would break them. */
#include <assert.h>
#include <errno.h>
#include <kestrel/kestrel.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>

static_assert(sizeof(GpioLineId) == 4, "GpioLineId has 32 bits");
static_assert((GpioLineId)-1 < 0, "GpioLineId is signed");
static_assert(sizeof(GpioDriveMode) == 4, "GpioDriveMode has 32 bits");
static_assert((GpioDriveMode)-1 > 0, "GpioDriveMode is unsigned");
static_assert(GpioDriveMode_PushPull == 0, "GpioDriveMode_PushPull");
static_assert(GpioDriveMode_OpenDrain == 1, "GpioDriveMode_OpenDrain");
static_assert(GpioDriveMode_OpenSource == 2, "GpioDriveMode_OpenSource");
static_assert(sizeof(GpioLevel) == 1, "GpioLevel has 8 bits");
static_assert((GpioLevel)-1 > 0, "GpioLevel is unsigned");
static_assert(GpioLevel_Low == 0, "GpioLevel_Low");
static_assert(GpioLevel_High == 1, "GpioLevel_High");

static int (*const log_debug)(const char*, ...) = Log_Debug;
static int (*const log_debug_var_args)(const char*, va_list) = Log_DebugVarArgs;
static int (*const open_as_output)(GpioLineId, GpioDriveMode, GpioLevel) = GPIO_OpenAsOutput;
static int (*const open_as_input)(GpioLineId) = GPIO_OpenAsInput;
static int (*const set_value)(int, GpioLevel) = GPIO_SetValue;
static int (*const get_value)(int, GpioLevel*) = GPIO_GetValue;

static int failures = 0;

static void ExpectRefusal(const char* call, int result, int expected_errno) {
  if (result != -1 || errno != expected_errno) {
    fprintf(stderr, "%s: result %d, errno %d\n", call, result, errno);
    ++failures;
  }
}

static int GatherAndLog(const char* format, ...) {
  va_list arguments;
  int result;
  va_start(arguments, format);
  result = log_debug_var_args(format, arguments);
  va_end(arguments);
  return result;
}

int main(void) {
  GpioLevel level = GpioLevel_High;
  ExpectRefusal("Log_Debug", log_debug(NULL), EFAULT);
  ExpectRefusal("Log_DebugVarArgs", GatherAndLog(NULL), EFAULT);
  ExpectRefusal("GPIO_OpenAsOutput mode", open_as_output(0, 3, GpioLevel_Low), EINVAL);
  ExpectRefusal("GPIO_OpenAsOutput level", open_as_output(0, GpioDriveMode_PushPull, 2), EINVAL);
  ExpectRefusal("GPIO_SetValue level", set_value(-1, 2), EINVAL);
  ExpectRefusal("GPIO_SetValue descriptor", set_value(-1, GpioLevel_Low), EBADF);
  ExpectRefusal("GPIO_GetValue pointer", get_value(-1, NULL), EFAULT);
  ExpectRefusal("GPIO_GetValue descriptor", get_value(-1, &level), EBADF);
  ExpectRefusal("GPIO_OpenAsInput line", open_as_input(-1), ENODEV);
  return failures;
}
