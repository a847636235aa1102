// SPDX-License-Identifier: Apache-2.0
#include "uart/uart_manager.h"

namespace kestrel::uart {

UartManager& GetUartManager() {
  static UartManager instance;
  return instance;
}

}  // namespace kestrel::uart
