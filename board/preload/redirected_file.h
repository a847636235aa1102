// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_PRELOAD_REDIRECTED_FILE_H
#define KESTREL_BOARD_PRELOAD_REDIRECTED_FILE_H

#include <termios.h>

#include "protocol/wire.h"

namespace kestrel::board::preload {

/// The errno with which the board lets `call` on `descriptor` fail, or 0; always 0 for descriptors
/// that are not of a real file to which the board redirects one of its paths. Nothing is remembered
/// for this: the kernel is asked which file the descriptor is of, so that copies made by dup, fork,
/// exec and descriptor passing count as well. Leaves errno alone.
///
/// With `not_kept`, also which bits of a terminal's settings the file does not keep.
int FileFault(const char* call, int descriptor, wire::TerminalBits* not_kept = nullptr);

/// Puts `bits` of `settings` back to what they are in `current`.
void Restore(const wire::TerminalBits& bits, const termios& current, termios* settings);

}  // namespace kestrel::board::preload

#endif  // KESTREL_BOARD_PRELOAD_REDIRECTED_FILE_H
