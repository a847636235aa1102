// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_PROTOCOL_TEXT_FILE_H
#define KESTREL_BOARD_PROTOCOL_TEXT_FILE_H

#include <string>

#include "host/unique_fd.h"

namespace kestrel::board::wire {

/// A file in memory with a text that is too long for a message. Invalid with errno set when there
/// is no room for it; EFBIG says that it is longer than kTextLimit.
UniqueFd MakeTextFile(const std::string& text);

/// Reads such a file as whoever made it sent it. False with errno set when that fails, also when it
/// is no file.
bool ReadTextFile(int file, std::string* text);

}  // namespace kestrel::board::wire

#endif  // KESTREL_BOARD_PROTOCOL_TEXT_FILE_H
