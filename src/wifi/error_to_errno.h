// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_ERROR_TO_ERRNO_H
#define KESTREL_WIFI_ERROR_TO_ERRNO_H

#include <nwl/error_code>

namespace wifi {

/// The errno that an exported function sets for `error`, which it prints unless the errno alone
/// says enough. Sets nothing itself.
///
/// The value alone decides, whatever the category: an errno of the socket that equals a Wi-Fi code
/// is translated like that code, so that EBADF (9) reaches applications as EEXIST. They know it so.
int ErrorToErrno(nwl::error_code error);

/// Ends an exported function whose operation failed with `error`: leaves the translation in errno
/// and returns -1.
int Fail(nwl::error_code error);

}  // namespace wifi

#endif  // KESTREL_WIFI_ERROR_TO_ERRNO_H
