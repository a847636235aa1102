/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Debug log: free-form text on the process's standard error.
 *
 * The text goes out unchanged. The library adds no prefix, no time stamp and no newline.
 */
#ifndef KESTREL_LOG_H
#define KESTREL_LOG_H

#include <kestrel/api.h>
#include <stdarg.h>

KESTREL_BEGIN_DECLS

/**
 * Formats `fmt` and the arguments onto standard error, as `fprintf(stderr, fmt, ...)` would: every
 * conversion of `fprintf` is available, and the arguments must match the format.
 *
 * Thread-safe. Each call is one call of the formatter, so the texts of two threads may interleave
 * only as the standard error stream lets them.
 *
 * @return 0 on success (not the number of characters), or -1 with errno set:
 *   - EFAULT: `fmt` is null. Nothing is printed.
 *   - any other: what the formatter left, such as EBADF (standard error is closed), EIO, ENOSPC or
 *     EPIPE (it cannot be written), EILSEQ (a wide character has no multibyte form) or EOVERFLOW
 *     (the text is longer than INT_MAX).
 *     Prints "[Kestrel:Log] error formatting debug message: COUNT and errno: TEXT" with the
 *     formatter's negative count and the text of its errno.
 */
KESTREL_API int Log_Debug(const char* fmt, ...) KESTREL_PRINTF(1, 2);

/**
 * Does what Log_Debug() does with arguments that the caller has already gathered, for use in
 * wrappers. As with `vfprintf`, the value of `args` is indeterminate afterwards and the caller
 * ends it with `va_end`.
 *
 * Thread-safe; returns, sets errno and prints as Log_Debug() does.
 */
KESTREL_API int Log_DebugVarArgs(const char* fmt, va_list args) KESTREL_PRINTF(1, 0);

KESTREL_END_DECLS

#endif /* KESTREL_LOG_H */
