// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_PRELOAD_BOARD_CLIENT_H
#define KESTREL_BOARD_PRELOAD_BOARD_CLIENT_H

#include <stddef.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace kestrel::board::preload {

/// A path that the board answers an open with, in place of the one asked for, and the connection
/// over which it did; the board keeps the file ready until that is closed.
struct RedirectedPath {
  char text[4096];
  int connection;
};

/// Whether this program runs on a board and the board stands in for `path`.
bool IsBoardPath(const char* path);

/// Whether `descriptor` came from the board. Nothing is remembered for this: the kernel is asked
/// who is at the other end, so copies made by dup, fork, exec and descriptor passing count as well.
/// Leaves errno alone.
bool IsBoardDescriptor(int descriptor);

/// Opens a path on the board. Returns a descriptor; or -1 with errno set; or, after filling in
/// `redirected`, kRedirected: then the path is to be opened, and the connection closed.
inline constexpr int kRedirected = -2;
int OpenOnBoard(const char* path, int flags, RedirectedPath* redirected);

/// Finds the real socket that stands at a path of the board. Returns 0 after filling in `address`,
/// or -1 with errno set as connect is to fail.
int FindSocketOnBoard(const char* path, sockaddr_un* address);

/// Closes a connection that the program does not know of. Leaves errno alone.
void CloseConnection(int connection);

/// Forwards an ioctl on a board descriptor; returns and sets errno as the device does.
int IoctlOnBoard(int descriptor, unsigned long request, void* argument);

/// The errno with which closing the board descriptor is to fail, or 0.
int CloseFault(int descriptor);

}  // namespace kestrel::board::preload

#endif  // KESTREL_BOARD_PRELOAD_BOARD_CLIENT_H
