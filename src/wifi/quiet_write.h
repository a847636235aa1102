// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_QUIET_WRITE_H
#define KESTREL_WIFI_QUIET_WRITE_H

#include <sys/types.h>
#include <sys/uio.h>

namespace wifi {

/// writev without its SIGPIPE: a peer that has gone gives EPIPE and nothing else. Of the process's
/// signal handling only the calling thread's mask is used, and given back.
ssize_t WriteQuietly(int fd, const iovec* vectors, int count);

}  // namespace wifi

#endif  // KESTREL_WIFI_QUIET_WRITE_H
