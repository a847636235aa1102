// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/uart_port.h"

#include <unistd.h>

#include <cerrno>
#include <nlohmann/json.hpp>
#include <utility>

namespace kestrel::board::uart {

using nlohmann::json;

UartPort::UartPort(int number, SettingNames forgotten)
    : number_(number), forgotten_(std::move(forgotten)) {}

std::string UartPort::path() const { return "/dev/ttyS" + std::to_string(number_); }

UniqueFd UartPort::Open() {
  UniqueFd opened = terminal_.Open();
  is_open_ = is_open_ || opened.valid();
  return opened;
}

size_t UartPort::Take(char* buffer, size_t size) {
  // Once all that was written has been read, a port that has been closed gives EIO.
  const ssize_t taken = read(terminal_.wire(), buffer, size);
  if (taken <= 0) {
    return 0;
  }
  out_ += static_cast<uint64_t>(taken);
  return static_cast<size_t>(taken);
}

size_t UartPort::Give(const char* data, size_t size) {
  // The kernel would keep the bytes for whoever opens the port next.
  if (!terminal_.IsOpen()) {
    lost_ += size;
    return size;
  }
  const ssize_t given = write(terminal_.wire(), data, size);
  if (given <= 0) {
    return 0;
  }
  in_ += static_cast<uint64_t>(given);
  return static_cast<size_t>(given);
}

bool UartPort::HungUp() {
  // A program may have opened it since.
  is_open_ = terminal_.IsOpen();
  return true;
}

json UartPort::Describe() const {
  const termios settings = terminal_.Settings();
  json description = uart::Describe(settings);
  description.update({{"port", number_},
                      {"device", path()},
                      {"terminal", file()},
                      {"open", terminal_.IsOpen()},
                      {"fresh", AreFresh(settings)},
                      {"in", in_},
                      {"out", out_},
                      {"lost", lost_},
                      {"forgets", forgotten_}});
  return description;
}

}  // namespace kestrel::board::uart
