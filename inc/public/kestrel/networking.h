/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Networking readiness: whether the device's networking is up, as the service that brings it up
 * tells in its status file, "/var/run/network_status".
 */
#ifndef KESTREL_NETWORKING_H
#define KESTREL_NETWORKING_H

#include <kestrel/api.h>
#include <stdbool.h>

KESTREL_BEGIN_DECLS

/**
 * Tells whether networking is ready. Does not wait for it: ask again later.
 *
 * The first five bytes of the status file are flags. Networking is ready when bytes 0, 2, 3 and 4
 * are not zero; byte 1 and all after byte 4 do not matter. Bytes that a short file lacks count as
 * zero, so a file that has just been created says "not ready".
 *
 * Thread-safe. Each call opens, reads and closes the file on its own.
 *
 * @param outIsNetworkingReady receives the answer; false when there is none
 * @return 0, or -1 with errno set:
 *   - EFAULT: `outIsNetworkingReady` is null. Prints nothing; the file is not opened.
 *   - EBUSY: the file is missing or cannot be opened or read, whatever the reason: ask again later.
 *     Prints "[Kestrel:Networking] error determining device networking state: NUMBER" with the
 *     errno of the system call that failed. `*outIsNetworkingReady` is false.
 */
KESTREL_API int Networking_IsNetworkingReady(bool* outIsNetworkingReady);

KESTREL_END_DECLS

#endif /* KESTREL_NETWORKING_H */
