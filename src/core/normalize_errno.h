// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_CORE_NORMALIZE_ERRNO_H
#define KESTREL_CORE_NORMALIZE_ERRNO_H

namespace kestrel {

/// Turns the EBADF, EFAULT or EINVAL of a device that the library itself opened and drove into
/// EIO: to the caller they would look like faults in the arguments.
///
/// Returns errno as it stands afterwards, which for any other `err` need not be `err`: callers
/// print between the failed call and this one, and what the print left in errno is what is
/// returned.
int normalize_errno(int err);

}  // namespace kestrel

#endif  // KESTREL_CORE_NORMALIZE_ERRNO_H
