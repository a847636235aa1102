// SPDX-License-Identifier: Apache-2.0
#include "wifi/ipc_client.h"

#include <unistd.h>

namespace vestaipc {

void IpcClient::Adopt(int32_t new_fd) {
  if (fd != -1 && fd != new_fd) {
    close(fd);
  }
  fd = new_fd;
}

}  // namespace vestaipc
