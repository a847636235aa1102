/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Manufacturing: the identifier that the device's security processor was given when the device was
 * made. The library passes on what the driver tells: whether the identifier stays the same for the
 * life of the device, and whether no other device has it, is up to those who give it.
 *
 *     char id[129];
 *     if (Manufacturing_GetDeviceId(id, sizeof id) < 0) return errno;
 *     puts(id);
 */
#ifndef KESTREL_MANUFACTURING_H
#define KESTREL_MANUFACTURING_H

#include <kestrel/api.h>
#include <stddef.h>

KESTREL_BEGIN_DECLS

/**
 * The size of the buffer that Manufacturing_GetDeviceId() needs.
 *
 * Thread-safe. Prints nothing, touches no device and cannot fail.
 *
 * @return 129: 128 digits and the terminating NUL
 */
KESTREL_API size_t Manufacturing_GetDeviceIdSize(void);

/**
 * Writes the device identifier, 64 bytes, as 128 upper-case hexadecimal digits and a NUL.
 *
 * Thread-safe. Each call opens "/dev/lodestone" and "/dev/warden", asks the latter and closes both;
 * their descriptors are close-on-exec. Returns as soon as the security processor has answered.
 *
 * @param outDeviceId     receives the text; the caller's
 * @param outDeviceIdSize bytes there, at least Manufacturing_GetDeviceIdSize()
 * @return 129, the number of bytes written, the NUL included; or -1 with errno set:
 *   - EFAULT: `outDeviceId` is null. Prints nothing.
 *   - ERANGE: `outDeviceIdSize` is 128 or less. Prints nothing. Unless the size is 0, the buffer
 *     receives an empty text.
 *   - EPERM: no memory is left. Prints "Failed to create SecurityManager." and
 *     "[Kestrel:Manufacturing] error querying device state". The buffer is untouched.
 *   - EACCES: "/dev/warden" cannot be opened, or does not tell; whether "/dev/lodestone" can be
 *     opened does not matter. Prints "[Kestrel:Manufacturing] error retrieving device state:
 *     NUMBER", where NUMBER is 107 when it cannot be opened and otherwise what its driver returned,
 *     -1 as a rule. The buffer is untouched.
 */
KESTREL_API int Manufacturing_GetDeviceId(char* outDeviceId, size_t outDeviceIdSize);

KESTREL_END_DECLS

#endif /* KESTREL_MANUFACTURING_H */
