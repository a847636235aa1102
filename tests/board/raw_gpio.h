// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_RAW_GPIO_H
#define KESTREL_TESTS_BOARD_RAW_GPIO_H

#include <linux/gpio.h>

#include <cstdint>
#include <initializer_list>

namespace kestrel::test {

/// The GPIO device by system calls alone, as a program without the library uses it. Failures are
/// the errno, negated.
int OpenChipDevice(int flags = 0);
int RequestLine(int chip, uint32_t line, uint32_t flags, uint8_t value = 0);
int RequestLines(int chip, std::initializer_list<uint32_t> lines, uint32_t flags,
                 std::initializer_list<uint8_t> values = {});
int SetLine(int handle, uint8_t value);
int GetLine(int handle);
gpioline_info LineInfo(int chip, uint32_t line);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_RAW_GPIO_H
