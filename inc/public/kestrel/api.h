/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * What all functions of libkestrel have in common. Every header of the library includes this one;
 * where a function says nothing else, the following holds.
 *
 *  1. Calls are synchronous and run on the caller's thread. The library starts no threads,
 *     installs no signal handlers and never ends the process, except
 *     - through a failed assertion: when one of its own mutexes cannot be locked or unlocked, or
 *       when a system call whose errno is to be passed on fails without one, which the kernel does
 *       not do;
 *     - when memory runs out in the process's first Wi-Fi call. Elsewhere memory that runs out
 *       either fails the function as it documents, or leaves a Wi-Fi function as the C++ exception
 *       std::bad_alloc, which ends a process that does not catch it.
 *  2. A function returns 0, or a descriptor, a count or a size where it says so, and -1 with
 *     `errno` set on failure. On success `errno` means nothing.
 *  3. Arguments are checked before any device is touched, in this order: null pointers (EFAULT),
 *     sizes and counts (ERANGE), versions and enumerated values (EINVAL), descriptors (EBADF).
 *     A refused argument prints nothing and changes nothing. What only the device can tell, such
 *     as whether it has a line of that number, is found out later; the function says so.
 *  4. A failed operation (as opposed to a refused argument) prints one line to standard error,
 *     which begins with the library's area in brackets, such as "[Kestrel:GPIO] ". Each function
 *     lists what it prints. There are no log levels and no log file.
 *  5. The `errno` that a function documents is what it leaves behind when standard error can be
 *     written. Where standard error is closed or full, the attempt to print may replace it.
 *  6. A descriptor that a function returns belongs to the caller, who closes it with `close`.
 *     Pointers are used during the call only; the library keeps none.
 *  7. "Thread-safe" means that any number of threads may call the function at once, also on the
 *     same descriptor. The library keeps its own state consistent; which of two concurrent calls
 *     on one device comes first is the kernel's choice. No function is async-signal-safe.
 *  8. A child of `fork` shares the library's descriptors with its parent, as it shares its own.
 *     Where other threads may have been in a call at the time of the fork, the child must `exec`
 *     before it calls the library, as with any lock.
 *  9. The library's objects are destroyed when it is unloaded or the process exits, in the order in
 *     which C++ destroys statics. Functions that run later still, such as an `atexit` handler that
 *     was registered before the first call, must not call the library.
 * 10. Enumerations are integer types of a fixed width with named constants, so that their size
 *     does not depend on the compiler. Levels, modes and the like outside the named constants are
 *     refused with EINVAL.
 * 11. Functions whose names begin with `z__` take a versioned record. Initialise the record with
 *     the function that the header names, and compile against the header that you deploy with.
 */
#ifndef KESTREL_API_H
#define KESTREL_API_H

#if defined(__GNUC__)
#define KESTREL_API __attribute__((visibility("default")))
#define KESTREL_PRINTF(format_index, first_index) \
  __attribute__((__format__(__printf__, format_index, first_index)))
#else
#define KESTREL_API
#define KESTREL_PRINTF(format_index, first_index)
#endif

#if defined(__cplusplus)
#define KESTREL_BEGIN_DECLS extern "C" {
#define KESTREL_END_DECLS }
#else
#define KESTREL_BEGIN_DECLS
#define KESTREL_END_DECLS
#endif

#endif /* KESTREL_API_H */
