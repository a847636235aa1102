// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "config/config_file.h"
#include "config/config_reader.h"

namespace kestrel::board {
namespace {

/// The line and the reason of the error that `action` throws.
template <typename Action>
std::string ErrorOf(Action action) {
  try {
    action();
  } catch (const ConfigError& error) {
    return std::to_string(error.line()) + ": " + error.what();
  }
  return "no error";
}

constexpr char kToml[] =
    "flag = true\n"
    "number = -3\n"
    "text = \"hello\"\n"
    "list = [\"a\", \"b\"]\n"
    "half = 0.5\n"
    "numbers = [4, 2]\n"
    "[table]\n"
    "inner = 1\n";

constexpr char kJson[] =
    "{\"flag\": true,\n"
    " \"number\": -3,\n"
    " \"text\": \"hello\",\n"
    " \"list\": [\"a\", \"b\"],\n"
    " \"half\": 0.5,\n"
    " \"numbers\": [4, 2],\n"
    " \"table\": {\n"
    "   \"inner\": 1\n"
    " }}\n";

class EitherFormat : public testing::TestWithParam<bool> {
 protected:
  const ConfigNode node_ = GetParam() ? ParseToml(kToml) : ParseJson(kJson);
  ConfigReader reader_{&node_, ""};
};

TEST_P(EitherFormat, GivesTheSameValues) {
  EXPECT_TRUE(reader_.Boolean("flag", false));
  EXPECT_EQ(reader_.Integer("number", -3, 3, 0), -3);
  EXPECT_EQ(reader_.Text("text", ""), "hello");
  const std::vector<ConfigText> list = reader_.Texts("list");
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].text + list[1].text, "ab");
  EXPECT_EQ(list[1].line, 4);
  EXPECT_EQ(reader_.Table("table").Integer("inner", 0, 9, 0), 1);
}

TEST_P(EitherFormat, ArraysOfNumbersKeepTheirLines) {
  const std::vector<ConfigInteger> numbers = reader_.Integers("numbers", 0, 9);
  ASSERT_EQ(numbers.size(), 2U);
  EXPECT_EQ(numbers[0].value, 4);
  EXPECT_EQ(numbers[1].value, 2);
  EXPECT_EQ(numbers[1].line, 6);
  EXPECT_TRUE(reader_.Integers("absent", 0, 9).empty());
  EXPECT_TRUE(reader_.Has("numbers"));
  EXPECT_FALSE(reader_.Has("absent"));
  EXPECT_EQ(ErrorOf([&] { reader_.Integers("numbers", 0, 3); }),
            "6: 'numbers' must be an array of whole numbers from 0 to 3");
  EXPECT_EQ(ErrorOf([&] { reader_.Integers("list", 0, 3); }),
            "4: 'list' must be an array of whole numbers from 0 to 3");
  EXPECT_EQ(ErrorOf([&] { reader_.Integers("text", 0, 3); }),
            "3: 'text' must be an array of whole numbers from 0 to 3");
}

TEST_P(EitherFormat, MissingKeysHaveTheirDefaults) {
  EXPECT_TRUE(reader_.Boolean("absent", true));
  EXPECT_EQ(reader_.Integer("absent", 0, 9, 7), 7);
  EXPECT_EQ(reader_.Text("absent", "otherwise"), "otherwise");
  EXPECT_EQ(reader_.Choice("absent", {"a", "b"}, "b"), "b");
  EXPECT_TRUE(reader_.Texts("absent").empty());
  EXPECT_TRUE(reader_.Tables("absent").empty());
}

TEST_P(EitherFormat, ErrorsNameLineKeyAndWhatWouldBeRight) {
  EXPECT_EQ(ErrorOf([&] { reader_.Boolean("number", false); }),
            "2: 'number' must be true or false");
  EXPECT_EQ(ErrorOf([&] { reader_.Integer("text", 0, 9, 0); }),
            "3: 'text' must be a whole number from 0 to 9");
  EXPECT_EQ(ErrorOf([&] { reader_.Integer("number", 0, 9, 0); }),
            "2: 'number' must be a whole number from 0 to 9");
  EXPECT_EQ(ErrorOf([&] { reader_.Integer("half", 0, 9, 0); }),
            "5: 'half' must be a whole number from 0 to 9");
  EXPECT_EQ(ErrorOf([&] { reader_.Text("flag", ""); }), "1: 'flag' must be a text");
  EXPECT_EQ(ErrorOf([&] { reader_.Text("text", "", 4); }),
            "3: 'text' must be a text of at most 4 bytes");
  EXPECT_EQ(ErrorOf([&] {
              reader_.Choice("text", {"a", "b"}, "a");
            }),
            "3: 'text' must be one of: a, b");
  EXPECT_EQ(ErrorOf([&] { reader_.Table("list"); }), "4: 'list' must be a table");
  EXPECT_EQ(ErrorOf([&] { reader_.Table("table").RequiredInteger("x", 0, 1); }),
            "7: 'table.x' is missing");
}

TEST_P(EitherFormat, UnknownKeysAreRefused) {
  ConfigReader table = reader_.Table("table");
  table.Boolean("outer", true);
  EXPECT_EQ(ErrorOf([&] { table.RefuseUnknownKeys(); }),
            "8: unknown key 'table.inner' (known: outer)");
  table.Integer("inner", 0, 9, 0);
  EXPECT_EQ(ErrorOf([&] { table.RefuseUnknownKeys(); }), "no error");
}

INSTANTIATE_TEST_SUITE_P(Formats, EitherFormat, testing::Bool(),
                         [](const auto& format) { return format.param ? "Toml" : "Json"; });

TEST(Json, KeyThatStandsTwiceIsRefused) {
  EXPECT_EQ(ErrorOf([] { ParseJson("{\"a\": 1,\n\"a\": 2}"); }),
            "2: the key 'a' stands here twice");
}

TEST(Json, NestedArraysAndTablesKeepTheirLines) {
  const ConfigNode node = ParseJson("{\"line\": [\n{\"offset\": 1},\n{\"offset\": 99}]}");
  ConfigReader reader(&node, "");
  std::vector<ConfigReader> lines = reader.Tables("line");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].RequiredInteger("offset", 0, 31), 1);
  EXPECT_EQ(ErrorOf([&] { lines[1].RequiredInteger("offset", 0, 31); }),
            "3: 'line.offset' must be a whole number from 0 to 31");
}

TEST(Json, HostileDepthIsRefused) {
  EXPECT_EQ(ErrorOf([] { ParseJson(std::string(400000, '[')); }),
            "1: nested deeper than 64 levels");
  EXPECT_EQ(ErrorOf([] { ParseJson(std::string(64, '[') + std::string(64, ']')); }), "no error");
}

TEST(Json, NumbersBeyondSixtyThreeBitsAreNoWholeNumbers) {
  const ConfigNode node = ParseJson("{\"n\": 18446744073709551615}");
  ConfigReader reader(&node, "");
  EXPECT_EQ(ErrorOf([&] { reader.Integer("n", 0, 9, 0); }),
            "1: 'n' must be a whole number from 0 to 9");
}

}  // namespace
}  // namespace kestrel::board
