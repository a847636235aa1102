// SPDX-License-Identifier: Apache-2.0
#include "wifi/reply_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "unit/wifi/recorded_reply.h"

namespace kestrel::test {
namespace {

constexpr size_t kNone = eastl::string::npos;

using Lines = std::vector<std::string>;

Lines Split(const std::string& reply) {
  Lines lines;
  for (const eastl::string& line : wifi::SplitLines(Text(reply))) {
    lines.push_back(Plain(line));
  }
  return lines;
}

TEST(SplitLines, DropsEmptyLines) {
  EXPECT_EQ(Split("a\n\nb"), (Lines{"a", "b"}));
  EXPECT_EQ(Split("\n\na\n\n\nb\n\n"), (Lines{"a", "b"}));
}

TEST(SplitLines, KeepsALastLineWithoutNewline) {
  EXPECT_EQ(Split("a\nb"), (Lines{"a", "b"}));
  EXPECT_EQ(Split("a\nb\n"), (Lines{"a", "b"}));
  EXPECT_EQ(Split("a"), Lines{"a"});
}

TEST(SplitLines, FindsNoneInAnEmptyReplyOrInNewlinesAlone) {
  EXPECT_EQ(Split(""), Lines{});
  EXPECT_EQ(Split("\n"), Lines{});
  EXPECT_EQ(Split("\n\n\n"), Lines{});
}

TEST(SplitLines, KeepsCarriageReturnsBlanksAndNulBytes) {
  EXPECT_EQ(Split("a\r\nb\r\n"), (Lines{"a\r", "b\r"}));
  EXPECT_EQ(Split(" \n\t\n"), (Lines{" ", "\t"}));
  EXPECT_EQ(Split(std::string("a\0b\nc\0", 6)),
            (Lines{std::string("a\0b", 3), std::string("c\0", 2)}));
}

TEST(FindChar, LooksFromAPositionOn) {
  EXPECT_EQ(wifi::FindChar("a=b=c", '=', 0), 1u);
  EXPECT_EQ(wifi::FindChar("a=b=c", '=', 1), 1u);
  EXPECT_EQ(wifi::FindChar("a=b=c", '=', 2), 3u);
  EXPECT_EQ(wifi::FindChar("a=b=c", '=', 4), kNone);
}

TEST(FindChar, FindsNothingOutsideTheText) {
  EXPECT_EQ(wifi::FindChar("a=", '=', 2), kNone);
  EXPECT_EQ(wifi::FindChar("a=", '=', 50), kNone);
  EXPECT_EQ(wifi::FindChar("a=", '=', kNone), kNone);
  EXPECT_EQ(wifi::FindChar("", '=', 0), kNone);
}

TEST(FindFirstOf, LooksForAnyOfTheSet) {
  EXPECT_EQ(wifi::FindFirstOf("ab cd\tef", " \t", 0, 2), 2u);
  EXPECT_EQ(wifi::FindFirstOf("ab cd\tef", " \t", 3, 2), 5u);
  EXPECT_EQ(wifi::FindFirstOf("ab cd\tef", " \t", 6, 2), kNone);
}

TEST(FindFirstOf, LooksAtTheGivenLengthOfTheSet) {
  EXPECT_EQ(wifi::FindFirstOf("ab\tcd ef", " \t", 0, 1), 5u);
  EXPECT_EQ(wifi::FindFirstOf("ab cd", " ", 0, 0), kNone);
}

TEST(FindFirstOf, FindsNothingOutsideTheText) {
  EXPECT_EQ(wifi::FindFirstOf("a ", " ", 2, 1), kNone);
  EXPECT_EQ(wifi::FindFirstOf("a ", " ", 50, 1), kNone);
  EXPECT_EQ(wifi::FindFirstOf("", " ", 0, 1), kNone);
}

struct Field {
  size_t next;
  std::string text;
  bool operator==(const Field& other) const { return next == other.next && text == other.text; }
};

void PrintTo(const Field& field, std::ostream* stream) {
  *stream << '"' << field.text << "\", then " << field.next;
}

Field Next(size_t from, const std::string& line) {
  eastl::string field("unchanged");
  const size_t next = wifi::NextField(from, " \t", Text(line), field);
  return {next, Plain(field)};
}

TEST(NextField, EndsAtADelimiterAndSkipsTheRun) {
  EXPECT_EQ(Next(0, "aa:bb\t\t2412\t-40"), (Field{7, "aa:bb"}));
  EXPECT_EQ(Next(7, "aa:bb\t\t2412\t-40"), (Field{12, "2412"}));
  EXPECT_EQ(Next(0, "a \t \tb"), (Field{5, "a"}));
}

TEST(NextField, NeedsADelimiter) {
  EXPECT_EQ(Next(12, "aa:bb\t\t2412\t-40"), (Field{kNone, "unchanged"}));
  EXPECT_EQ(Next(0, "line"), (Field{kNone, "unchanged"}));
  EXPECT_EQ(Next(0, ""), (Field{kNone, "unchanged"}));
  EXPECT_EQ(Next(9, "a b"), (Field{kNone, "unchanged"}));
}

TEST(NextField, HasNoNextOneWhereTheLineEnds) {
  EXPECT_EQ(Next(0, "[ESS]\t"), (Field{kNone, "[ESS]"}));
  EXPECT_EQ(Next(0, "[ESS] \t "), (Field{kNone, "[ESS]"}));
}

TEST(NextField, MayBeEmpty) {
  EXPECT_EQ(Next(0, "\ta"), (Field{1, ""}));
  EXPECT_EQ(Next(1, "a\tb"), (Field{2, ""}));
}

TEST(NextField, TakesANulByteForText) {
  EXPECT_EQ(Next(0, std::string("a\0b\tc", 5)), (Field{4, std::string("a\0b", 3)}));
  EXPECT_EQ(Next(0, std::string("a\t\0b", 4)), (Field{2, "a"}));
}

TEST(ContainsPsk, LooksAnywhereInTheText) {
  for (const char* const flags : {"PSK", "[WPA2-PSK-CCMP][ESS]", "xPSK", "PSKx", "WPA-PSK"}) {
    EXPECT_TRUE(wifi::ContainsPsk(flags)) << flags;
  }
  for (const char* const flags : {"", "P", "PS", "psk", "P-SK", "[WPA2-SAE-CCMP][ESS]", "SAE"}) {
    EXPECT_FALSE(wifi::ContainsPsk(flags)) << flags;
  }
  EXPECT_TRUE(wifi::ContainsPsk(Text(std::string("\0PSK", 4))));
}

}  // namespace
}  // namespace kestrel::test
