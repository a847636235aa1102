// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "on_board.h"

namespace kestrel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// What bash offers for the last of the words that follow "kestrelctl".
Words Complete(const Words& words) {
  const std::string script = "set -u; source '" KESTRELCTL_COMPLETION
                             "';"
                             "COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _kestrelctl;"
                             "printf '%s\\n' \"${COMPREPLY[@]}\"";
  Words command = {"bash", "-c", script, "bash", "kestrelctl"};
  command.insert(command.end(), words.begin(), words.end());
  const ProgramResult result = RunProgram(command);
  EXPECT_THAT(result.standard_error, "");
  std::istringstream output(result.standard_output);
  return {std::istream_iterator<std::string>(output), {}};
}

/// The long options that the command's help names.
Words OptionsOf(const Words& command) {
  Words help = {KESTRELCTL};
  help.insert(help.end(), command.begin(), command.end());
  help.emplace_back("--help");
  const std::string text = RunProgram(help).standard_output;
  const std::string options = text.substr(0, text.find("Examples:"));
  static const std::regex option("--[a-z][a-z-]*");
  std::set<std::string> found;
  for (std::sregex_iterator match(options.begin(), options.end(), option), end; match != end;
       ++match) {
    found.insert(match->str());
  }
  return {found.begin(), found.end()};
}

TEST(KestrelctlCompletion, IsRegistered) {
  const ProgramResult result =
      RunProgram({"bash", "-c", "source '" KESTRELCTL_COMPLETION "'; complete -p kestrelctl"});
  EXPECT_THAT(result, Ends(0, "complete -F _kestrelctl kestrelctl\n", ""));
}

TEST(KestrelctlCompletion, OffersTheCommands) {
  EXPECT_THAT(Complete({""}), UnorderedElementsAre("gpio", "uart", "network", "wifi", "device-id",
                                                   "log", "--help", "--version"));
  EXPECT_THAT(Complete({"g"}), ElementsAre("gpio"));
  EXPECT_THAT(Complete({"gpio", ""}), UnorderedElementsAre("get", "set", "watch", "--help"));
  EXPECT_THAT(Complete({"gpio", "w"}), ElementsAre("watch"));
  EXPECT_THAT(Complete({"wifi", ""}),
              UnorderedElementsAre("scan", "list", "current", "add", "forget", "--help"));
  EXPECT_THAT(Complete({"x"}), IsEmpty());
}

TEST(KestrelctlCompletion, OffersTheValuesOfAnOption) {
  EXPECT_THAT(Complete({"gpio", "set", "4=1", "--drive", ""}),
              UnorderedElementsAre("push-pull", "open-drain", "open-source"));
  EXPECT_THAT(Complete({"gpio", "set", "--drive", "open-d"}), ElementsAre("open-drain"));
  EXPECT_THAT(Complete({"gpio", "set", "--hold", ""}), IsEmpty());
  EXPECT_THAT(Complete({"gpio", "watch", "--interval", ""}), IsEmpty());
  EXPECT_THAT(Complete({"uart", "0", "--flow", ""}),
              UnorderedElementsAre("none", "rts-cts", "xon-xoff"));
  EXPECT_THAT(Complete({"uart", "--baud=92"}), ElementsAre("--baud=921600"));
  EXPECT_THAT(Complete({"uart", "0", "--baud", "1"}),
              UnorderedElementsAre("19200", "115200", "1000000", "1152000", "1500000"));
  EXPECT_THAT(Complete({"uart", "0", "--timeout", ""}), IsEmpty());
  EXPECT_THAT(Complete({"uart", "0", "--bytes", ""}), IsEmpty());
  EXPECT_THAT(Complete({"network", "--wait", ""}), IsEmpty());
  EXPECT_THAT(Complete({"wifi", "add", "x", "--security", ""}),
              UnorderedElementsAre("open", "wpa2"));
  EXPECT_THAT(Complete({"wifi", "forget", "x", "--security=u"}), ElementsAre("--security=unknown"));
}

TEST(KestrelctlCompletion, OffersEverySupportedBaudRate) {
  const std::string refusal = RunProgram({KESTRELCTL, "uart", "0", "--baud", "1"}).standard_error;
  const Words bauds = Complete({"uart", "0", "--baud", ""});
  EXPECT_EQ(bauds.size(), 14U);
  for (const std::string& baud : bauds) {
    EXPECT_THAT(refusal, testing::ContainsRegex(" " + baud + "[ ,\n]"));
  }
}

TEST(KestrelctlCompletion, OffersFilesToSend) {
  const TemporaryDirectory folder;
  const std::string file = folder.Write("firmware.bin", "");
  EXPECT_THAT(Complete({"uart", "0", "--send", folder.path() + "/f"}), ElementsAre(file));
}

TEST(KestrelctlCompletion, OffersFilesWithAPassphrase) {
  const TemporaryDirectory folder;
  const std::string file = folder.Write("lab.key", "");
  EXPECT_THAT(Complete({"wifi", "add", "x", "--passphrase-file", folder.path() + "/l"}),
              ElementsAre(file));
}

TEST(KestrelctlCompletion, OffersLevelsAfterTheEqualsSign) {
  EXPECT_THAT(Complete({"gpio", "set", "4="}),
              UnorderedElementsAre("4=high", "4=low", "4=0", "4=1"));
  EXPECT_THAT(Complete({"gpio", "set", "4=1", "5=h"}), ElementsAre("5=high"));
  EXPECT_THAT(Complete({"gpio", "get", "4="}), IsEmpty());
}

TEST(KestrelctlCompletion, OffersTheValuesOfAnOptionAfterTheEqualsSign) {
  EXPECT_THAT(Complete({"gpio", "set", "--drive=open-"}),
              UnorderedElementsAre("--drive=open-drain", "--drive=open-source"));
  EXPECT_THAT(Complete({"gpio", "set", "--hold="}), IsEmpty());
  EXPECT_THAT(Complete({"gpio", "set", "--drive=open-drain", "--h"}),
              UnorderedElementsAre("--hold", "--help"));
}

/// Interactive bash makes the equals sign a word, and replaces what follows it alone.
TEST(KestrelctlCompletion, OffersTheRestOfAWordThatBashHasSplit) {
  EXPECT_THAT(Complete({"gpio", "set", "4", "="}), UnorderedElementsAre("high", "low", "0", "1"));
  EXPECT_THAT(Complete({"gpio", "set", "4", "=", "1", "5", "=", "h"}), ElementsAre("high"));
  EXPECT_THAT(Complete({"gpio", "set", "--drive", "=", "open-"}),
              UnorderedElementsAre("open-drain", "open-source"));
  EXPECT_THAT(Complete({"gpio", "set", "4", "=", "1", "--d"}), ElementsAre("--drive"));
  EXPECT_THAT(Complete({"gpio", "watch", "--interval", "="}), IsEmpty());
}

TEST(KestrelctlCompletion, KnowsEveryOptionOfEveryCommand) {
  for (const Words& command :
       {Words{"gpio", "get"}, Words{"gpio", "set"}, Words{"gpio", "watch"}, Words{"uart"},
        Words{"network"}, Words{"wifi", "scan"}, Words{"wifi", "list"}, Words{"wifi", "current"},
        Words{"wifi", "add"}, Words{"wifi", "forget"}, Words{"device-id"}, Words{"log"}}) {
    Words typed = command;
    typed.emplace_back("--");
    Words offered = Complete(typed);
    std::sort(offered.begin(), offered.end());
    EXPECT_EQ(offered, OptionsOf(command)) << command.back();
  }
}

}  // namespace
}  // namespace kestrel::test
