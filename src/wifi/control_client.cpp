// SPDX-License-Identifier: Apache-2.0
#include "wifi/control_client.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <utility>

#include "core/file_owner.h"
#include "wifi/control_event.h"
#include "wifi/quiet_write.h"
#include "wifi/wifi_error.h"

namespace wifi {
namespace {

static_assert(SO_RCVTIMEO == 20);
static_assert(sizeof(sockaddr_un) == 110);

nwl::error_code NotConnected() { return {EINVAL}; }

int ConnectToDaemon(int fd) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  static_assert(sizeof kControlSocketPath <= sizeof address.sun_path);
  memcpy(address.sun_path, kControlSocketPath, sizeof kControlSocketPath);
  return connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

/// The command goes out with its terminating NUL.
ssize_t WriteCommand(int fd, const eastl::string& command) {
  const iovec vector = {const_cast<char*>(command.c_str()), strlen(command.c_str()) + 1};
  return WriteQuietly(fd, &vector, 1);
}

ssize_t ReadReply(int fd, eastl::string* reply) {
  const timeval timeout = {kReplyTimeoutSeconds, 0};
  setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
  return read(fd, reply->data(), reply->size());
}

bool IsRefusal(const eastl::string& reply) {
  return reply.size() >= 4 && memcmp(reply.data(), "FAIL", 4) == 0;
}

}  // namespace

WifiControlClient::WifiControlClient(eastl::shared_ptr<vestaipc::IpcClient> given)
    : ipc(given ? std::move(given) : eastl::make_shared<vestaipc::IpcClient>()) {
  if (ipc->fd < 0) {
    Connect();
  }
}

void WifiControlClient::Connect() {
  kestrel::FileOwner connection(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  if (connection.get() < 0) {
    ReportControlEvent(kSocketFailed, errno);
    return;
  }
  // A daemon that is not there is silent here: each request will tell.
  if (ConnectToDaemon(connection.get()) == 0) {
    ipc->Adopt(connection.Release());
  }
}

nwl::Expected<eastl::string> WifiControlClient::Request(const eastl::string& command) {
  eastl::string reply(kReplyBufferSize, '\0');
  if (ipc->fd == -1) {
    return NotConnected();
  }
  const nwl::Expected<size_t> received = Exchange(command, &reply);
  if (!received.has_value()) {
    return received.error();
  }
  reply.resize(received.value());
  if (IsRefusal(reply)) {
    return MakeError(WifiError::CommandFailed);
  }
  return reply;
}

nwl::Expected<size_t> WifiControlClient::Exchange(const eastl::string& command,
                                                  eastl::string* reply) {
  const nwl::LockGuard guard(ipc->mutex);
  // Another thread may have closed it since it was last looked at.
  if (ipc->fd == -1) {
    return NotConnected();
  }
  if (WriteCommand(ipc->fd, command) < 0) {
    return GiveUp(kWriteFailed);
  }
  const ssize_t received = ReadReply(ipc->fd, reply);
  if (received < 0) {
    return GiveUp(kReadFailed);
  }
  return static_cast<size_t>(received);
}

nwl::error_code WifiControlClient::GiveUp(int event) {
  ReportControlEvent(event, errno);
  ipc->Close();
  return {errno};
}

}  // namespace wifi
