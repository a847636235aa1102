// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_REPLY_TEXT_H
#define KESTREL_WIFI_REPLY_TEXT_H

#include <EASTL/string.h>
#include <EASTL/vector.h>
#include <stddef.h>

namespace wifi {

/// What separates the fields of a line.
inline constexpr char kFieldDelimiters[] = " \t";

/// The lines of a reply without their newlines. Empty ones are dropped; a last line without a
/// newline counts.
eastl::vector<eastl::string> SplitLines(const eastl::string& reply);

/// The first `c`, or the first of the `setLength` bytes at `set`, at or after `from`. npos when
/// there is none, also for a `from` that is not inside the text.
size_t FindChar(const eastl::string& text, char c, size_t from);
size_t FindFirstOf(const eastl::string& text, const char* set, size_t from, size_t setLength);

/// Puts into `field` the text of `line` from `from` up to the next delimiter, and returns where the
/// field behind the run of delimiters starts, or npos when the line ends there. Without a
/// delimiter, returns npos and leaves `field` alone.
size_t NextField(size_t from, const char* delimiters, const eastl::string& line,
                 eastl::string& field);

/// Whether "PSK" occurs in `flags`.
bool ContainsPsk(const eastl::string& flags);

}  // namespace wifi

#endif  // KESTREL_WIFI_REPLY_TEXT_H
