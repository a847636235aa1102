// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_TERMINAL_TEXT_H
#define KESTREL_TOOLS_KESTRELCTL_TERMINAL_TEXT_H

#include <string>
#include <string_view>

namespace kestrelctl {

/// Bytes from a stranger, in quotation marks, such that no terminal obeys them: \" and \\ for these
/// two, and \xHH for each byte of what is no text, controls the terminal, has no look of its own or
/// turns the direction of writing. Without a locale of UTF-8 that is all but ASCII.
std::string Quoted(std::string_view bytes);

/// Each byte as two hexadecimal digits.
std::string Hex(std::string_view bytes);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_TERMINAL_TEXT_H
