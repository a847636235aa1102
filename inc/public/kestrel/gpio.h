/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * GPIO: single lines of the device's first GPIO chip, "/dev/gpiochip0".
 *
 * An open line is a descriptor of the kernel. While it is open, nobody else can open the line, in
 * this process or another. Close it with `close` to release the line. The library keeps one
 * descriptor of its own, that of the chip: the first successful open makes it, and it is closed
 * when the library is unloaded or the process exits. It is not close-on-exec, so programs that the
 * application starts inherit it unless the application closes it for them.
 *
 *     int led = GPIO_OpenAsOutput(4, GpioDriveMode_PushPull, GpioLevel_Low);
 *     if (led < 0) return errno;
 *     GPIO_SetValue(led, GpioLevel_High);
 *     close(led);
 *
 * Errors that come from the kernel are reported as they are, with one exception: EBADF, EFAULT and
 * EINVAL become EIO, because the argument at fault would be the library's and not the caller's.
 */
#ifndef KESTREL_GPIO_H
#define KESTREL_GPIO_H

#include <kestrel/api.h>
#include <stdint.h>

KESTREL_BEGIN_DECLS

/** The offset of a line on the chip: 0 is the first line. */
typedef int32_t GpioLineId;

/** How an output drives its line. */
typedef uint32_t GpioDriveMode;
enum {
  GpioDriveMode_PushPull = 0,  /**< Drives both levels. */
  GpioDriveMode_OpenDrain = 1, /**< Drives low; high releases the line to whatever pulls it up. */
  GpioDriveMode_OpenSource = 2 /**< Drives high; low releases the line to whatever pulls it down. */
};

/** The logic level of a line. */
typedef uint8_t GpioLevel;
enum { GpioLevel_Low = 0, GpioLevel_High = 1 };

/**
 * Opens a line as an output and drives it to `initial` at once.
 *
 * Thread-safe. The first open of the process also opens the chip; threads that come at the same
 * time open it once.
 *
 * @param line    offset of the line on the chip, from 0
 * @param mode    a GpioDriveMode constant
 * @param initial GpioLevel_Low or GpioLevel_High
 * @return the line's descriptor (0 or more, close-on-exec), which the caller closes; or -1 with
 *   errno set:
 *   - EINVAL: `mode` or `initial` is not one of the constants. Prints nothing, touches nothing.
 *   - ENODEV: the chip, once it has been opened and asked, has no such line; negative offsets
 *     included. Prints nothing.
 *   - ENOENT, EACCES, EMFILE and the other errors of `open`: the chip cannot be opened; the next
 *     call tries again. Prints "[Kestrel:GPIO] Problem opening GPIO chip: TEXT (NUMBER)".
 *   - ENODEV, EIO and so on: the chip does not tell about itself. Prints
 *     "[Kestrel:GPIO] Problem getting GPIO info: TEXT (NUMBER)".
 *   - EBUSY: the line is in use; EMFILE, ENFILE, ENOMEM: no descriptor or memory is left; EIO: the
 *     kernel refuses the request. Prints "[Kestrel:GPIO] Problem opening GPIO: TEXT (NUMBER)".
 *   TEXT and NUMBER are the kernel's error, before EBADF, EFAULT and EINVAL become EIO.
 */
KESTREL_API int GPIO_OpenAsOutput(GpioLineId line, GpioDriveMode mode, GpioLevel initial);

/**
 * Opens a line as an input.
 *
 * Thread-safe, as GPIO_OpenAsOutput() is.
 *
 * @param line offset of the line on the chip, from 0
 * @return the line's descriptor (0 or more, close-on-exec), which the caller closes; or -1 with
 *   errno set and a message printed as GPIO_OpenAsOutput() does, EINVAL excepted.
 */
KESTREL_API int GPIO_OpenAsInput(GpioLineId line);

/**
 * Drives an open output line.
 *
 * Thread-safe. Returns as soon as the kernel has set the line: at once on most chips, after a
 * transfer for one that sits behind a bus.
 *
 * @param fd    descriptor from GPIO_OpenAsOutput(), still the caller's
 * @param value GpioLevel_Low or GpioLevel_High; an open-drain line is released by high, an
 *              open-source line by low
 * @return 0, or -1 with errno set:
 *   - EINVAL: `value` is not one of the constants. Checked first; prints nothing.
 *   - EBADF: `fd` is negative. Prints nothing.
 *   - EPERM: the line is open as an input; EIO: `fd` is not open (the kernel's EBADF); ENOTTY:
 *     `fd` is no GPIO line; ENODEV: the chip has gone.
 *     Prints "[Kestrel:GPIO] Problem setting GPIO value: TEXT (NUMBER)".
 */
KESTREL_API int GPIO_SetValue(int fd, GpioLevel value);

/**
 * Reads the level of an open line. An output can be read as well.
 *
 * Thread-safe. Returns as soon as the kernel has read the line, as GPIO_SetValue() does.
 *
 * @param fd    descriptor from GPIO_OpenAsInput() or GPIO_OpenAsOutput(), still the caller's
 * @param value receives GpioLevel_Low or GpioLevel_High; untouched on failure
 * @return 0, or -1 with errno set:
 *   - EFAULT: `value` is null. Checked first; prints nothing.
 *   - EBADF: `fd` is negative. Prints nothing.
 *   - EIO: `fd` is not open (the kernel's EBADF); ENOTTY: `fd` is no GPIO line; ENODEV: the chip
 *     has gone. Prints "[Kestrel:GPIO] Problem getting GPIO value: TEXT (NUMBER)".
 */
KESTREL_API int GPIO_GetValue(int fd, GpioLevel* value);

KESTREL_END_DECLS

#endif /* KESTREL_GPIO_H */
