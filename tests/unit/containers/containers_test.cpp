// SPDX-License-Identifier: Apache-2.0
// What the library relies on in its containers, and nothing else: the file compiles and passes
// with EASTL as with libs/eastl-std.
#include <EASTL/hash_map.h>
#include <EASTL/shared_ptr.h>
#include <EASTL/string.h>
#include <EASTL/vector.h>
#include <gtest/gtest.h>
#include <stdarg.h>

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace {

using eastl::string;

static_assert(std::is_same_v<string::size_type, size_t>);
static_assert(string::npos == static_cast<size_t>(-1));
static_assert(!std::is_convertible_v<string, const char*>);
static_assert(!std::is_convertible_v<string, std::string>);
static_assert(!std::is_convertible_v<string&, std::string&>);
static_assert(!std::is_convertible_v<std::string, string>);
static_assert(!std::is_convertible_v<int, string>);
static_assert(std::is_convertible_v<const char*, string>);
static_assert(sizeof(eastl::shared_ptr<int>) == 2 * sizeof(void*));

__attribute__((format(printf, 2, 3))) void Print(string& text, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  text.sprintf_va_list(format, arguments);
  va_end(arguments);
}

__attribute__((format(printf, 2, 3))) void PrintMore(string& text, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  text.append_sprintf_va_list(format, arguments);
  va_end(arguments);
}

TEST(String, DefaultIsEmptyAndTerminated) {
  const string text;
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(text.size(), 0u);
  EXPECT_STREQ(text.c_str(), "");
}

TEST(String, CopiesACString) {
  const string text("kestrel");
  EXPECT_EQ(text.size(), 7u);
  EXPECT_STREQ(text.c_str(), "kestrel");
  EXPECT_EQ(text.data(), text.c_str());
}

TEST(String, KeepsNulBytesGivenWithALength) {
  const string text("a\0b", 3);
  EXPECT_EQ(text.size(), 3u);
  EXPECT_EQ(text.data()[1], '\0');
  EXPECT_EQ(text.data()[2], 'b');
  EXPECT_EQ(text.c_str()[3], '\0');
}

TEST(String, RepeatsACharacter) { EXPECT_STREQ(string(3, 'x').c_str(), "xxx"); }

TEST(String, CopiesAPartOfAnother) {
  const string whole("GET_NETWORK 3");
  EXPECT_STREQ(string(whole, 4, 7).c_str(), "NETWORK");
  EXPECT_STREQ(string(whole, 12).c_str(), "3");
  EXPECT_STREQ(string(whole, 12, 50).c_str(), "3");
  EXPECT_STREQ(string(whole, whole.size()).c_str(), "");
}

TEST(String, FormatsAtConstruction) {
  const string text(string::CtorSprintf(), "%s %i", "line", -4);
  EXPECT_STREQ(text.c_str(), "line -4");
}

TEST(String, FormatsTextOfAnyLength) {
  for (const int length : {0, 1, 14, 15, 16, 22, 23, 24, 63, 64, 255, 256, 4096, 100000}) {
    const string text(string::CtorSprintf(), "%*d", length, 7);
    const size_t expected = length == 0 ? 1 : static_cast<size_t>(length);
    ASSERT_EQ(text.size(), expected);
    ASSERT_EQ(text.data()[expected - 1], '7');
    ASSERT_EQ(text.c_str()[expected], '\0');
  }
}

TEST(String, FormatsAnEmptyText) {
  const string text(string::CtorSprintf(), "%s", "");
  EXPECT_TRUE(text.empty());
}

TEST(String, KeepsNulBytesThatAFormatMakes) {
  const string text(string::CtorSprintf(), "a%cb", '\0');
  EXPECT_EQ(text.size(), 3u);
  EXPECT_EQ(text.data()[2], 'b');
}

TEST(String, SprintfReplacesTheText) {
  string text("a text that was there before");
  text.sprintf("%d", 13);
  EXPECT_STREQ(text.c_str(), "13");
  Print(text, "%s-%u", "wlan", 0u);
  EXPECT_STREQ(text.c_str(), "wlan-0");
}

TEST(String, AppendSprintfKeepsTheText) {
  string text("SET_NETWORK");
  text.append_sprintf(" %d", 2).append_sprintf(" %s", "ssid");
  PrintMore(text, " %02x", 10u);
  EXPECT_STREQ(text.c_str(), "SET_NETWORK 2 ssid 0a");
}

TEST(String, AppendSprintfGrowsAsOftenAsNeeded) {
  string text;
  for (int i = 0; i < 1000; ++i) {
    text.append_sprintf("%05d,", i);
  }
  EXPECT_EQ(text.size(), 6000u);
  EXPECT_STREQ(text.substr(5994).c_str(), "00999,");
}

TEST(String, AssignReplacesTheText) {
  string text("old");
  EXPECT_STREQ(text.assign("a C string").c_str(), "a C string");
  EXPECT_STREQ(text.assign("prefix", 3).c_str(), "pre");
  EXPECT_STREQ(text.assign(2, 'z').c_str(), "zz");
  EXPECT_STREQ(text.assign(string("another")).c_str(), "another");
  EXPECT_STREQ(text.assign(string("a part"), 2, 4).c_str(), "part");
  text = "a C string";
  EXPECT_STREQ(text.c_str(), "a C string");
}

TEST(String, AppendAddsAtTheEnd) {
  string text("a");
  text.append("b").append("cd", 1).append(2, 'd').append(string("e")).append(string("xfy"), 1, 1);
  text.push_back('g');
  EXPECT_STREQ(text.c_str(), "abcddefg");
}

TEST(String, PlusJoins) {
  string text("a");
  text += 'b';
  text += "c";
  text += string("d");
  const string e("e");
  EXPECT_STREQ(text.c_str(), "abcd");
  EXPECT_STREQ(('<' + text + e + "f" + 'g' + string(">")).c_str(), "<abcdefg>");
  EXPECT_STREQ(("x" + e).c_str(), "xe");
}

TEST(String, FindLooksForward) {
  const string line("02:00\t2412\t-40");
  EXPECT_EQ(line.find('\t'), 5u);
  EXPECT_EQ(line.find('\t', 6), 10u);
  EXPECT_EQ(line.find("24"), 6u);
  EXPECT_EQ(line.find(string("-40"), 3), 11u);
  EXPECT_EQ(line.find("-41", 0, 2), 11u);
  EXPECT_EQ(line.find('x'), string::npos);
}

TEST(String, FindBeyondTheEndFindsNothing) {
  const string text("abc");
  EXPECT_EQ(text.find('a', 50), string::npos);
  EXPECT_EQ(text.find("a", 50), string::npos);
  EXPECT_EQ(text.find_first_of("a", 50), string::npos);
}

TEST(String, RfindLooksBackward) {
  const string path("/var/volatile/tmp");
  EXPECT_EQ(path.rfind('/'), 13u);
  EXPECT_EQ(path.rfind('/', 12), 4u);
  EXPECT_EQ(path.rfind("var"), 1u);
  EXPECT_EQ(path.rfind(string("t")), 14u);
  EXPECT_EQ(path.rfind("missing"), string::npos);
}

TEST(String, FindFirstOfLooksForAnyOfASet) {
  const string text("key=value\n");
  EXPECT_EQ(text.find_first_of("\n="), 3u);
  EXPECT_EQ(text.find_first_of("\n=", 4), 9u);
  EXPECT_EQ(text.find_first_of(string("v")), 4u);
  EXPECT_EQ(text.find_first_of('e'), 1u);
  EXPECT_EQ(text.find_first_of("XYZ"), string::npos);
}

TEST(String, SubstrCutsAPart) {
  const string text("abcdef");
  EXPECT_STREQ(text.substr(2, 3).c_str(), "cde");
  EXPECT_STREQ(text.substr(4).c_str(), "ef");
  EXPECT_STREQ(text.substr(4, 100).c_str(), "ef");
  EXPECT_STREQ(text.substr(6).c_str(), "");
}

TEST(String, CompareOrdersByBytes) {
  const string text("abc");
  EXPECT_EQ(text.compare("abc"), 0);
  EXPECT_LT(text.compare("abd"), 0);
  EXPECT_GT(text.compare("ab"), 0);
  EXPECT_GT(text.compare(string("abb")), 0);
  EXPECT_EQ(text.compare(1, 2, "bc"), 0);
  EXPECT_EQ(text.compare(1, 1, string("b")), 0);
}

TEST(String, EqualityComparesWholeTexts) {
  const string text("FAIL");
  EXPECT_TRUE(text == string("FAIL"));
  EXPECT_TRUE(text == "FAIL");
  EXPECT_TRUE("FAIL" == text);
  EXPECT_FALSE(text == "FAIL\n");
  EXPECT_FALSE(string("a\0b", 3) == string("a\0c", 3));
}

TEST(String, ResizeCutsAndFills) {
  string text("abcdef");
  text.resize(3);
  EXPECT_STREQ(text.c_str(), "abc");
  text.resize(5, '-');
  EXPECT_STREQ(text.c_str(), "abc--");
  text.resize(6);
  EXPECT_TRUE(text == string("abc--\0", 6));
}

TEST(String, ReserveAndClearKeepTheRest) {
  string text("abc");
  text.reserve(500);
  EXPECT_STREQ(text.c_str(), "abc");
  text.clear();
  EXPECT_TRUE(text.empty());
  EXPECT_STREQ(text.c_str(), "");
}

TEST(String, DataCanBeWritten) {
  string text(3, ' ');
  text.data()[1] = 'x';
  EXPECT_STREQ(text.c_str(), " x ");
}

// NOLINTBEGIN(bugprone-use-after-move,clang-analyzer-cplusplus.Move): moved from means empty here
TEST(String, MovedFromIsEmpty) {
  for (const size_t length : {size_t{3}, size_t{3000}}) {
    string source(length, 'm');
    string target(std::move(source));
    EXPECT_TRUE(source.empty());
    EXPECT_STREQ(source.c_str(), "");
    EXPECT_EQ(target.size(), length);
    source = std::move(target);
    EXPECT_TRUE(target.empty());
    EXPECT_EQ(source.size(), length);
  }
}
// NOLINTEND(bugprone-use-after-move,clang-analyzer-cplusplus.Move)

TEST(String, CopyIsIndependent) {
  string original("original");
  string copy(original);
  copy.data()[0] = 'O';
  EXPECT_STREQ(original.c_str(), "original");
  copy = original;
  EXPECT_TRUE(copy == original);
}

TEST(String, SwapExchangesTexts) {
  string left("left");
  string right(100, 'r');
  left.swap(right);
  EXPECT_EQ(left.size(), 100u);
  EXPECT_STREQ(right.c_str(), "left");
}

TEST(String, EqualTextsHashAlike) {
  const eastl::hash<string> hash;
  EXPECT_EQ(hash(string("ssid")), hash(string("an ssid").substr(3)));
  EXPECT_NE(hash(string("ssid")), hash(string("psk")));
}

TEST(Vector, GrowsAtTheEnd) {
  eastl::vector<string> lines;
  EXPECT_TRUE(lines.empty());
  lines.reserve(2);
  const string first("a");
  lines.push_back(first);
  lines.emplace_back("b");
  EXPECT_EQ(lines.size(), 2u);
  EXPECT_STREQ(lines[0].c_str(), "a");
  EXPECT_STREQ(lines.back().c_str(), "b");
}

TEST(Vector, IteratesInOrder) {
  eastl::vector<int> numbers;
  for (int i = 0; i < 1000; ++i) {
    numbers.push_back(i);
  }
  int next = 0;
  for (const int number : numbers) {
    ASSERT_EQ(number, next++);
  }
  EXPECT_EQ(next, 1000);
}

TEST(Vector, HoldsAndMovesMoveOnlyValues) {
  eastl::vector<std::unique_ptr<int>> source;
  source.push_back(std::make_unique<int>(5));
  const eastl::vector<std::unique_ptr<int>> target(std::move(source));
  EXPECT_TRUE(source.empty());  // NOLINT(bugprone-use-after-move): moved from means empty here
  ASSERT_EQ(target.size(), 1u);
  EXPECT_EQ(*target[0], 5);
}

TEST(HashMap, FindsWhatWasStored) {
  eastl::hash_map<string, int> levels;
  levels[string("one")] = 1;
  levels.insert_or_assign(string("two"), 5);
  levels.insert_or_assign(string("two"), 2);
  EXPECT_EQ(levels.size(), 2u);
  EXPECT_EQ(levels.find(string("one"))->second, 1);
  EXPECT_EQ(levels.find(string("two"))->second, 2);
  EXPECT_TRUE(levels.find(string("three")) == levels.end());
}

TEST(HashMap, IndexMakesADefaultValue) {
  eastl::hash_map<int, int> counts;
  EXPECT_EQ(counts[7], 0);
  EXPECT_EQ(counts.size(), 1u);
}

TEST(HashMap, CopyIsIndependent) {
  eastl::hash_map<string, string> original;
  original[string("state")] = string("COMPLETED");
  eastl::hash_map<string, string> copy(original);
  copy[string("state")] = string("SCANNING");
  EXPECT_STREQ(original[string("state")].c_str(), "COMPLETED");
}

TEST(SharedPtr, CountsItsOwners) {
  const eastl::shared_ptr<int> first = eastl::make_shared<int>(3);
  EXPECT_EQ(first.use_count(), 1);
  {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the second owner counts
    const eastl::shared_ptr<int> second = first;
    EXPECT_EQ(first.use_count(), 2);
    EXPECT_EQ(*second, 3);
  }
  EXPECT_EQ(first.use_count(), 1);
}

TEST(SharedPtr, IsTrueWhenItPoints) {
  eastl::shared_ptr<int> pointer;
  EXPECT_FALSE(pointer);
  pointer = eastl::make_shared<int>(0);
  EXPECT_TRUE(pointer);
}

TEST(SharedPtr, LastOwnerDestroys) {
  const auto watched = std::make_shared<int>(0);
  auto owner = eastl::make_shared<std::shared_ptr<int>>(watched);
  EXPECT_EQ(watched.use_count(), 2);
  owner = eastl::shared_ptr<std::shared_ptr<int>>();
  EXPECT_EQ(watched.use_count(), 1);
}

}  // namespace
