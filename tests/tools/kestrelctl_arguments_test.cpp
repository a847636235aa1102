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
    testing::Values(
        BadArguments{
            {},
            "give a command: gpio, uart, network, wifi, device-id or log; see 'kestrelctl --help'"},
        BadArguments{
            {"spi"},
            "give a command: gpio, uart, network, wifi, device-id or log; see 'kestrelctl --help'"},
        BadArguments{{"gpio"}, "give a command: get, set or watch; see 'kestrelctl gpio --help'"},
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

INSTANTIATE_TEST_SUITE_P(
    Waits, KestrelctlArguments,
    testing::Values(
        BadArguments{{"network", "--wait", "soon"},
                     "'soon' is no time to wait: give seconds from 0 to 86400, such as 2.5"},
        BadArguments{{"network", "--wait", "-1"},
                     "'-1' is no time to wait: give seconds from 0 to 86400, such as 2.5"},
        BadArguments{
            {"network", "up"},
            "The following argument was not expected: up; see 'kestrelctl network --help'"},
        BadArguments{{"device-id", "0"},
                     "The following argument was not expected: 0; "
                     "see 'kestrelctl device-id --help'"}));

INSTANTIATE_TEST_SUITE_P(
    Uarts, KestrelctlArguments,
    testing::Values(
        BadArguments{{"uart"}, "NUMBER is required; see 'kestrelctl uart --help'"},
        BadArguments{{"uart", "zero"}, "'zero' is no UART: give a number from 0 to 255"},
        BadArguments{{"uart", "-1"}, "'-1' is no UART: give a number from 0 to 255"},
        BadArguments{{"uart", "256"}, "'256' is no UART: give a number from 0 to 255"},
        BadArguments{{"uart", "0", "--baud", "1200"},
                     "'1200' is no baud rate: give 9600, 19200, 38400, 57600, 115200, 230400, "
                     "460800, 500000, 576000, 921600, 1000000, 1152000, 1500000 or 2000000"},
        BadArguments{{"uart", "0", "--baud", "fast"},
                     "'fast' is no baud rate: give 9600, 19200, 38400, 57600, 115200, 230400, "
                     "460800, 500000, 576000, 921600, 1000000, 1152000, 1500000 or 2000000"},
        BadArguments{{"uart", "0", "--flow", "RTS"},
                     "'RTS' is no flow control: give none, rts-cts or xon-xoff"},
        BadArguments{{"uart", "0", "--receive", "--bytes", "0"},
                     "'0' is no number of bytes: give a number from 1 on"},
        BadArguments{{"uart", "0", "--receive", "--bytes", "-5"},
                     "'-5' is no number of bytes: give a number from 1 on"},
        BadArguments{{"uart", "0", "--receive", "--timeout", "x"},
                     "'x' is no time to receive: give seconds from 0 to 86400, such as 2.5"},
        BadArguments{{"uart", "0", "--send", "-", "--bytes", "5"},
                     "--bytes and --timeout tell how long to receive: add --receive"},
        BadArguments{{"uart", "0", "--timeout", "5"},
                     "--bytes and --timeout tell how long to receive: add --receive"},
        BadArguments{{"uart", "0", "--send", "-", "--hex"},
                     "--hex shows what is received: add --receive"},
        BadArguments{{"uart", "0"},
                     "standard input is no terminal: give --send FILE, --send - or --receive"}));

const std::string kNoHex = "\" is no name in hexadecimal: give two digits for each byte";

INSTANTIATE_TEST_SUITE_P(
    Wifi, KestrelctlArguments,
    testing::Values(
        BadArguments{
            {"wifi"},
            "give a command: scan, list, current, add or forget; see 'kestrelctl wifi --help'"},
        BadArguments{{"wifi", "scan", "--wait", "soon"},
                     "'soon' is no time to wait: give seconds from 0 to 86400, such as 2.5"},
        BadArguments{{"wifi", "add"}, "NAME is required; see 'kestrelctl wifi add --help'"},
        BadArguments{{"wifi", "add", ""}, R"("" is no name of a network: give 1 to 32 bytes)"},
        BadArguments{{"wifi", "add", "--hex", ""},
                     R"("" is no name of a network: give 1 to 32 bytes)"},
        BadArguments{{"wifi", "forget", "123456789012345678901234567890123"},
                     "\"123456789012345678901234567890123\" is no name of a network: give 1 to 32 "
                     "bytes"},
        BadArguments{
            {"wifi", "forget", "\x1b]0;3456789012345678901234567890\x07"},
            "\"\\x1b]0;3456789012345678901234567890\\x07\" is no name of a network: give 1 "
            "to 32 bytes"},
        BadArguments{{"wifi", "forget", "--hex", "616"}, "\"616" + kNoHex},
        BadArguments{{"wifi", "forget", "--hex", "6g"}, "\"6g" + kNoHex},
        BadArguments{{"wifi", "forget", "--hex", "+161"}, "\"+161" + kNoHex},
        BadArguments{{"wifi", "forget", "--hex", "\x1b[2J"}, R"("\x1b[2J)" + kNoHex},
        BadArguments{{"wifi", "add", "\x1b[2J"},
                     R"("\x1b[2J" cannot be added: names have printable ASCII characters only)"},
        BadArguments{{"wifi", "add", "--hex", "00"},
                     R"("00" cannot be added: names have printable ASCII characters only)"},
        BadArguments{{"wifi", "add", "x", "--security", "wep"},
                     "'wep' is no security: give open, wpa2 or unknown"},
        BadArguments{{"wifi", "add", "x", "--security", "unknown"},
                     "networks to add have --security open or wpa2"},
        BadArguments{{"wifi", "add", "x", "--security", "open", "--passphrase-file", "f"},
                     "an open network has no passphrase"},
        BadArguments{{"wifi", "add", "x", "--ask-passphrase", "--passphrase-file", "f"},
                     "give --ask-passphrase or --passphrase-file, not both"}));

INSTANTIATE_TEST_SUITE_P(
    WifiWithoutTerminal, KestrelctlArguments,
    testing::Values(
        BadArguments{{"wifi", "add", "x", "--ask-passphrase"},
                     "standard input is no terminal to ask at: give --passphrase-file FILE"},
        BadArguments{{"wifi", "add", "x", "--security", "wpa2"},
                     "standard input is no terminal to ask at: give --passphrase-file FILE"},
        BadArguments{{"wifi", "forget"}, "give the NAME of a network, or --all"},
        BadArguments{{"wifi", "forget", "--yes"}, "give the NAME of a network, or --all"},
        BadArguments{{"wifi", "forget", "x", "--all", "--yes"}, "give a NAME or --all, not both"},
        BadArguments{{"wifi", "forget", "--all", "--yes", "--security", "open"},
                     "give a NAME or --all, not both"},
        BadArguments{{"wifi", "forget", "--all", "--yes", "--hex"},
                     "give a NAME or --all, not both"},
        BadArguments{{"wifi", "forget", "--all"},
                     "standard input is no terminal to ask at: give --yes to forget all "
                     "networks"}));

TEST(KestrelctlHelp, TellsTheVersion) {
  EXPECT_THAT(RunProgram({KESTRELCTL, "--version"}),
              Ends(0, "kestrelctl " KESTREL_VERSION "\n", ""));
}

class KestrelctlHelpOf : public testing::TestWithParam<Words> {};

INSTANTIATE_TEST_SUITE_P(EveryCommand, KestrelctlHelpOf,
                         testing::Values(Words{}, Words{"gpio", "get"}, Words{"gpio", "set"},
                                         Words{"gpio", "watch"}, Words{"uart"}, Words{"network"},
                                         Words{"wifi", "scan"}, Words{"wifi", "list"},
                                         Words{"wifi", "current"}, Words{"wifi", "add"},
                                         Words{"wifi", "forget"}, Words{"device-id"},
                                         Words{"log"}));

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
