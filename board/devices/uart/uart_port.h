// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_UART_UART_PORT_H
#define KESTREL_BOARD_DEVICES_UART_UART_PORT_H

#include <cstdint>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "devices/uart/pseudo_terminal.h"
#include "devices/uart/serial_settings.h"
#include "devices/uart/shuttle.h"

namespace kestrel::board::uart {

/// One serial port, as an end of its wire.
class UartPort : public WireEnd {
 public:
  /// Throws BoardError.
  UartPort(int number, SettingNames forgotten);

  int number() const { return number_; }
  /// The path by which programs know it, and the real file that stands there.
  std::string path() const;
  const std::string& file() const { return terminal_.path(); }

  /// Opens it as a program is about to; invalid with errno set when that fails.
  UniqueFd Open();

  /// The settings that it does not keep.
  const SettingNames& forgotten() const { return forgotten_; }
  void Forget(SettingNames names) { forgotten_ = std::move(names); }

  nlohmann::json Describe() const;

  int descriptor() const override { return is_open_ ? terminal_.wire() : -1; }
  size_t Take(char* buffer, size_t size) override;
  size_t Give(const char* data, size_t size) override;
  bool HungUp() override;

 private:
  int number_;
  PseudoTerminal terminal_;
  SettingNames forgotten_;
  bool is_open_ = false;
  uint64_t in_ = 0;    ///< bytes that have come in over the wire
  uint64_t out_ = 0;   ///< bytes that programs have sent
  uint64_t lost_ = 0;  ///< bytes that came while no program had the port open
};

}  // namespace kestrel::board::uart

#endif  // KESTREL_BOARD_DEVICES_UART_UART_PORT_H
