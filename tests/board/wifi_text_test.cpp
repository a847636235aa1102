// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/wifi_text.h"

#include <gtest/gtest.h>

namespace kestrel::board::wifi {
namespace {

using namespace std::string_literals;

TEST(WifiText, EscapesWhatIsNoPrintableAscii) {
  EXPECT_EQ(Escape("open ap"), "open ap");
  EXPECT_EQ(Escape("q\"b\\s\x01\t\xff"), R"(q\"b\\s\x01\t\xff)");
  EXPECT_EQ(Escape("tab\tnl\nesc\x1b\r\x7f"), R"(tab\tnl\nesc\e\r\x7f)");
  EXPECT_EQ(Escape("\0\x1f ~"s), R"(\x00\x1f ~)");
}

TEST(WifiText, UnescapesAllThatItEscapes) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) {
    bytes.push_back(static_cast<char>(i));
  }
  EXPECT_EQ(Unescape(Escape(bytes)), bytes);
}

TEST(WifiText, UnescapesShortAndOctalNumbersToo) {
  EXPECT_EQ(Unescape(R"(\x4g\101\0\18)"),
            "\x04gA\0\1"
            "8"s);
  // A number ends where it has its digits, whatever follows.
  EXPECT_EQ(Unescape(R"(\x41f\1012)"), "AfA2");
  EXPECT_EQ(Unescape(R"(a\qb\x)"), "ab");
  EXPECT_EQ(Unescape("a\\"), "a");
}

TEST(WifiText, ParsesQuotedEscapedAndHexadecimalValues) {
  EXPECT_EQ(ParseBytes(R"("a"b\x41")"), R"(a"b\x41)");
  EXPECT_EQ(ParseBytes(R"(P"a\"b\x41")"), R"(a"bA)");
  EXPECT_EQ(ParseBytes("00fF"), "\0\xff"s);
  EXPECT_EQ(ParseBytes("\"\""), "");
  EXPECT_EQ(ParseBytes(""), "");
}

TEST(WifiText, RefusesOtherValues) {
  for (const char* value : {"\"", "\"a", "\"a\"b", "P\"", "P\"a", "abc", "xy", "P", "41 42"}) {
    EXPECT_EQ(ParseBytes(value), std::nullopt) << value;
  }
}

TEST(WifiText, FormatsInQuotesWhatIsPrintable) {
  EXPECT_EQ(FormatBytes("a\"b\\"), "\"a\"b\\\"");
  EXPECT_EQ(FormatBytes(""), "\"\"");
  EXPECT_EQ(FormatBytes("Caf\xc3\xa9"), "436166c3a9");
  EXPECT_EQ(FormatBytes("\0"s), "00");
}

}  // namespace
}  // namespace kestrel::board::wifi
