// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BENCH_IOCTL_STAND_IN_H
#define KESTREL_BENCH_IOCTL_STAND_IN_H

/// How often the program's own ioctl, which succeeds at once and does nothing, was called.
extern int g_ioctl_calls;

#endif  // KESTREL_BENCH_IOCTL_STAND_IN_H
