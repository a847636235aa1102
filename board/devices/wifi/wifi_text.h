// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_WIFI_TEXT_H
#define KESTREL_BOARD_DEVICES_WIFI_WIFI_TEXT_H

#include <optional>
#include <string>

namespace kestrel::board::wifi {

/// Bytes as the daemon prints names: printable ASCII as it is, but \" and \\; \e, \n, \r and \t;
/// everything else as \xHH.
std::string Escape(const std::string& bytes);

/// The bytes that such a text stands for; octal digits after a backslash are known as well.
std::string Unescape(const std::string& text);

/// The bytes that a value stands for: "TEXT" as it is, P"TEXT" with escapes, or hexadecimal digits.
std::optional<std::string> ParseBytes(const std::string& value);

/// How the daemon tells such a value: in quotes, or in hexadecimal digits when one of the bytes is
/// not printable ASCII.
std::string FormatBytes(const std::string& bytes);

bool IsPrintable(const std::string& text);

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_WIFI_TEXT_H
