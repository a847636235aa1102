// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_PROTOCOL_PATH_LIST_H
#define KESTREL_BOARD_PROTOCOL_PATH_LIST_H

#include <stddef.h>

namespace kestrel::board::wire {

/// Whether `path` is the first `length` bytes of `entry`. An entry that ends in '#' stands for all
/// paths that have a number, of one digit or more, in that place.
bool Matches(const char* entry, size_t length, const char* path);

/// Whether `path` matches an entry of the colon-separated `list`.
bool IsListed(const char* list, const char* path);

}  // namespace kestrel::board::wire

#endif  // KESTREL_BOARD_PROTOCOL_PATH_LIST_H
