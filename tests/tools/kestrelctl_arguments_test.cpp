// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "on_board.h"

namespace kestrel::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

struct BadArguments {
  Words arguments;
  std::string answer;
};

void PrintTo(const BadArguments& bad, std::ostream* stream) { *stream << bad.answer; }

/// No board is there: bad arguments are refused before anything is opened.
class KestrelctlArguments : public testing::TestWithParam<BadArguments> {};

TEST_P(KestrelctlArguments, AreAnsweredByWhatWouldHaveBeenRight) {
  Words command = {KESTRELCTL};
  command.insert(command.end(), GetParam().arguments.begin(), GetParam().arguments.end());
  EXPECT_THAT(RunProgram(command), Ends(2, "", "kestrelctl: " + GetParam().answer + "\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Commands, KestrelctlArguments,
    testing::Values(BadArguments{{}, "give a command: gpio or log; see 'kestrelctl --help'"},
                    BadArguments{{"uart"}, "give a command: gpio or log; see 'kestrelctl --help'"},
                    BadArguments{{"gpio"},
                                 "give a command: get, set or watch; see 'kestrelctl gpio --help'"},
                    BadArguments{{"gpio", "read"},
                                 "give a command: get, set or watch; see 'kestrelctl gpio --help'"},
                    BadArguments{{"gpio", "get", "3", "--loud"},
                                 "The following argument was not expected: --loud; "
                                 "see 'kestrelctl gpio get --help'"},
                    BadArguments{{"log"}, "TEXT is required; see 'kestrelctl log --help'"},
                    BadArguments{{"log", "two", "words"},
                                 "The following argument was not expected: words; "
                                 "see 'kestrelctl log --help'"}));

INSTANTIATE_TEST_SUITE_P(
    Lines, KestrelctlArguments,
    testing::Values(
        BadArguments{{"gpio", "get"}, "LINE is required; see 'kestrelctl gpio get --help'"},
        BadArguments{{"gpio", "watch"}, "LINE is required; see 'kestrelctl gpio watch --help'"},
        BadArguments{{"gpio", "get", "three"},
                     "'three' is no line: give a number from 0 to 2147483647"},
        BadArguments{{"gpio", "get", "3x"}, "'3x' is no line: give a number from 0 to 2147483647"},
        BadArguments{{"gpio", "get", ""}, "'' is no line: give a number from 0 to 2147483647"},
        BadArguments{{"gpio", "get", " 3"}, "' 3' is no line: give a number from 0 to 2147483647"},
        BadArguments{{"gpio", "get", "3\n4"},
                     "'3 4' is no line: give a number from 0 to 2147483647"},
        BadArguments{{"gpio", "get", "-1"}, "'-1' is no line: give a number from 0 to 2147483647"},
        BadArguments{{"gpio", "watch", "--", "-1"},
                     "'-1' is no line: give a number from 0 to 2147483647"},
        BadArguments{{"gpio", "get", "2147483648"},
                     "'2147483648' is no line: give a number from 0 to 2147483647"},
        BadArguments{{"gpio", "get", "3", "4", "3"}, "line 3 is given twice: name each line once"},
        BadArguments{{"gpio", "watch", "3", "03"}, "line 3 is given twice: name each line once"}));

INSTANTIATE_TEST_SUITE_P(
    Settings, KestrelctlArguments,
    testing::Values(
        BadArguments{{"gpio", "set"}, "LINE=LEVEL is required; see 'kestrelctl gpio set --help'"},
        BadArguments{{"gpio", "set", "4"}, "'4' sets nothing: give LINE=LEVEL, such as 4=high"},
        BadArguments{{"gpio", "set", "=1"}, "'' is no line: give a number from 0 to 2147483647"},
        BadArguments{{"gpio", "set", "4="}, "'' is no level: give 0, 1, low or high"},
        BadArguments{{"gpio", "set", "4=2"}, "'2' is no level: give 0, 1, low or high"},
        BadArguments{{"gpio", "set", "4=HIGH"}, "'HIGH' is no level: give 0, 1, low or high"},
        BadArguments{{"gpio", "set", "4=1=0"}, "'1=0' is no level: give 0, 1, low or high"},
        BadArguments{{"gpio", "set", "4=1", "4=0"}, "line 4 is given twice: name each line once"}));

INSTANTIATE_TEST_SUITE_P(
    Options, KestrelctlArguments,
    testing::Values(
        BadArguments{{"gpio", "set", "4=1", "--drive", "both"},
                     "'both' is no drive: give push-pull, open-drain or open-source"},
        BadArguments{{"gpio", "set", "4=1", "--hold", "long"},
                     "'long' is no time to hold: give seconds from 0 to 86400, such as 2.5"},
        BadArguments{{"gpio", "set", "4=1", "--hold", "-1"},
                     "'-1' is no time to hold: give seconds from 0 to 86400, such as 2.5"},
        BadArguments{{"gpio", "set", "4=1", "--hold", "86400.1"},
                     "'86400.1' is no time to hold: give seconds from 0 to 86400, such as 2.5"},
        BadArguments{{"gpio", "set", "4=1", "--hold", "nan"},
                     "'nan' is no time to hold: give seconds from 0 to 86400, such as 2.5"},
        BadArguments{{"gpio", "set", "4=1", "--hold"},
                     "--hold: 1 required SECONDS missing; see 'kestrelctl gpio set --help'"},
        BadArguments{{"gpio", "watch", "3", "--interval", "0"},
                     "'0' is no interval: give milliseconds from 1 to 60000"},
        BadArguments{{"gpio", "watch", "3", "--interval", "60001"},
                     "'60001' is no interval: give milliseconds from 1 to 60000"},
        BadArguments{{"gpio", "watch", "3", "--interval", "1.5"},
                     "'1.5' is no interval: give milliseconds from 1 to 60000"}));

TEST(KestrelctlHelp, TellsTheVersion) {
  EXPECT_THAT(RunProgram({KESTRELCTL, "--version"}),
              Ends(0, "kestrelctl " KESTREL_VERSION "\n", ""));
}

class KestrelctlHelpOf : public testing::TestWithParam<Words> {};

INSTANTIATE_TEST_SUITE_P(EveryCommand, KestrelctlHelpOf,
                         testing::Values(Words{}, Words{"gpio", "get"}, Words{"gpio", "set"},
                                         Words{"gpio", "watch"}, Words{"log"}));

TEST_P(KestrelctlHelpOf, ShowsUsageAndExamples) {
  Words command = {KESTRELCTL};
  std::string name = "kestrelctl";
  for (const std::string& word : GetParam()) {
    command.push_back(word);
    name += " " + word;
  }
  command.emplace_back("--help");
  const ProgramResult result = RunProgram(command);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.standard_error, "");
  EXPECT_THAT(result.standard_output,
              AllOf(HasSubstr("Usage: " + name), HasSubstr("Examples:\n  " + name)));
}

}  // namespace
}  // namespace kestrel::test
