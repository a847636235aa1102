// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_FILE_REPLACEMENT_H
#define KESTREL_BOARD_HOST_FILE_REPLACEMENT_H

#include <sys/types.h>

#include <string>

namespace kestrel::board {

/// What a file is called until it takes the place of the one before.
inline constexpr char kReplacementSuffix[] = ".new";

/// Writes all of a text; false with errno set when that fails.
bool WriteAll(int file, const std::string& content);

/// Replaces a file at once: whoever reads it sees what was or what is, and no mixture. The new file
/// has `mode` less the umask, whatever the one before had. False with errno set when that fails;
/// then the one before stays.
bool ReplaceFile(const std::string& path, const std::string& content, mode_t mode);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_FILE_REPLACEMENT_H
