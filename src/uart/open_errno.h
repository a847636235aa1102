// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_UART_OPEN_ERRNO_H
#define KESTREL_UART_OPEN_ERRNO_H

namespace kestrel::uart {

/// Turns the EPERM, EFAULT, ENODEV or EINVAL that made an open fail into EIO: to the caller they
/// would look like faults in the arguments, or like a number that no port can have.
///
/// Returns errno as it stands afterwards, which for any other `saved` need not be `saved`: when
/// closing the device failed as well, the caller sees the error of the close.
int translateUartOpenErrno(int saved);

}  // namespace kestrel::uart

#endif  // KESTREL_UART_OPEN_ERRNO_H
