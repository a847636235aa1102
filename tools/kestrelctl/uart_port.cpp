// SPDX-License-Identifier: Apache-2.0
#include "uart_port.h"

#include <cerrno>

#include "failure.h"
#include "library_diagnostics.h"

namespace kestrelctl {
namespace {

void ReportUnopened(uint32_t number) {
  if (errno == 0) {
    ReportProblem(UartName(number) + ": the driver does not take these settings");
    return;
  }
  ReportFailure(UartName(number),
                {{EWOULDBLOCK, "another program has the port open"},
                 {ENOENT, "the device has no such port"},
                 {EACCES, "this user may not open the port"},
                 {ENXIO, "there is no hardware behind the port"},
                 {EIO,
                  "there is no hardware behind the port, or its driver fails; --verbose "
                  "shows which step failed"},
                 {ENOTTY, "the device is no serial port"}});
}

}  // namespace

std::string UartName(uint32_t number) { return "UART " + std::to_string(number); }

std::optional<Descriptor> OpenUart(const UartSettings& settings) {
  UartConfigRecord config;
  z__UART_InitConfig(&config, UART_CONFIG_VERSION);
  config.baudRate = settings.baud;
  config.flowControl = settings.flow;
  Descriptor port(CallLibrary([&] {
    // A driver that reports other settings than it was given leaves errno as it was.
    errno = 0;
    return z__UART_Open(settings.number, &config);
  }));
  if (!port.is_open()) {
    ReportUnopened(settings.number);
    return std::nullopt;
  }
  return port;
}

}  // namespace kestrelctl
