// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_GPIO_LINE_VALUES_H
#define KESTREL_GPIO_LINE_VALUES_H

#include <kestrel/gpio.h>

namespace kestrel::gpio {

/// Drive or read the one line behind the descriptor `line_fd`. Both return 0, or -1 with errno set
/// after printing what went wrong; `level` is then untouched.
int SetLineLevel(int line_fd, GpioLevel level);
int GetLineLevel(int line_fd, GpioLevel* level);

}  // namespace kestrel::gpio

#endif  // KESTREL_GPIO_LINE_VALUES_H
