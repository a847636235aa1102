/* SPDX-License-Identifier: Apache-2.0 */
/* The system calls behind some functions of the library as an application in C would make them by
 * hand. Each returns 0, or -1, unless it says otherwise. */
#ifndef KESTREL_BENCH_BARE_CALLS_H
#define KESTREL_BENCH_BARE_CALLS_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Opens, locks, sets and checks a port as z__UART_Open does with its defaults. Returns the port. */
int BareUartOpen(const char* path);

int BareIsNetworkingReady(int* ready);

/* `text` has room for 129 bytes. */
int BareGetDeviceId(char* text);

/* Makes the two exchanges of a scan over a connection to the Wi-Fi daemon. `list` has room for
 * `size` bytes; returns how many of them the list of networks takes. */
ssize_t BareScan(int daemon, char* list, size_t size);

#ifdef __cplusplus
}
#endif

#endif /* KESTREL_BENCH_BARE_CALLS_H */
