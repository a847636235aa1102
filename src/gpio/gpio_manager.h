// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_GPIO_GPIO_MANAGER_H
#define KESTREL_GPIO_GPIO_MANAGER_H

#include <kestrel/gpio.h>
#include <stdint.h>

#include <atomic>

namespace kestrel::gpio {

/// Owns the descriptor of the GPIO chip, which is opened by the first line and kept until the
/// library is unloaded. Lines belong to whoever opened them.
class GpioManager {
 public:
  constexpr GpioManager() = default;
  virtual ~GpioManager();
  GpioManager(const GpioManager&) = delete;
  GpioManager& operator=(const GpioManager&) = delete;

  /// Opens one line with the kernel's request `flags`; `level` above 1 sets no level. Returns the
  /// line's descriptor, or -1 with errno set after printing what went wrong with the device.
  int32_t OpenLine(GpioLineId line, uint32_t flags, GpioLevel level);

 private:
  int32_t EnsureChipIsOpen();

  // Read without the lock by every open, hence atomic.
  std::atomic<int32_t> chip_fd_{-1};
};

GpioManager& GetGpioManager();

}  // namespace kestrel::gpio

#endif  // KESTREL_GPIO_GPIO_MANAGER_H
