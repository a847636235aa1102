// SPDX-License-Identifier: Apache-2.0
#include "serial_port.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>

namespace kestrel::test {
namespace {

constexpr int kPatienceMilliseconds = 10000;

bool Await(int port, short event) {
  pollfd watched = {port, event, 0};
  return poll(&watched, 1, kPatienceMilliseconds) == 1 && (watched.revents & event) != 0;
}

}  // namespace

UartConfigRecord PortConfig(UartFlowControl flow_control) {
  UartConfigRecord config;
  z__UART_InitConfig(&config, UART_CONFIG_VERSION);
  config.flowControl = flow_control;
  return config;
}

int OpenPort(uint32_t number) {
  const UartConfigRecord config = PortConfig();
  return z__UART_Open(number, &config);
}

std::string ReadFrom(int port, size_t size) {
  std::string text;
  char buffer[4096];
  while (text.size() < size && Await(port, POLLIN)) {
    const ssize_t count = read(port, buffer, std::min(sizeof buffer, size - text.size()));
    if (count > 0) {
      text.append(buffer, static_cast<size_t>(count));
    }
  }
  return text;
}

bool WriteTo(int port, const std::string& text) {
  size_t written = 0;
  while (written < text.size() && Await(port, POLLOUT)) {
    const ssize_t count = write(port, text.data() + written, text.size() - written);
    written += count > 0 ? static_cast<size_t>(count) : 0;
  }
  return written == text.size();
}

}  // namespace kestrel::test
