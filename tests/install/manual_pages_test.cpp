// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "abi/promised_names.h"
#include "install/manual_page.h"
#include "support/run_program.h"

namespace {

using kestrel::test::BlockOf;
using kestrel::test::Content;
using kestrel::test::FirstGroups;
using kestrel::test::RunProgram;
using testing::HasSubstr;
using testing::SizeIs;

std::string Page(const std::string& path) { return Content(KESTREL_SOURCE_DIR "/man/" + path); }

std::set<std::string> Exports() {
  return kestrel::test::GlobalNames(KESTREL_SOURCE_DIR "/src/kestrel.map");
}

/// The page to which that of a function leads.
std::string PageOf(const std::string& function) {
  const std::set<std::string> target =
      FirstGroups(Page("man3/" + function + ".3"), R"(\.so (man3/kestrel_[a-z]+\.3)\n)");
  EXPECT_THAT(target, SizeIs(1)) << function;
  return target.empty() ? "" : Page(*target.begin());
}

TEST(ManualPages, EveryFunctionLeadsToOneThatNamesIt) {
  for (const std::string& function : Exports()) {
    EXPECT_THAT(FirstGroups(BlockOf(PageOf(function), ".Sh", "NAME"), R"(\.Nm (\w+))"),
                testing::Contains(function));
  }
}

TEST(ManualPages, TellEveryErrnoOfTheHeaders) {
  const auto comments = kestrel::test::FunctionComments(KESTREL_SOURCE_DIR "/inc/public/kestrel");
  ASSERT_EQ(comments.size(), Exports().size());
  size_t count = 0;
  for (const auto& [function, comment] : comments) {
    const std::string all = BlockOf(PageOf(function), ".Sh", "ERRORS");
    const std::string errors = BlockOf(all, ".Ss", function);
    const std::string common = all.substr(0, all.find("\n.Ss "));
    const std::set<std::string> told = FirstGroups(common + errors, R"(\bEr (E[A-Z0-9]+)\b)");
    for (const std::string& name : FirstGroups(comment, R"(\b(E[A-Z0-9]{3,})\b)")) {
      EXPECT_THAT(told, testing::Contains(name)) << function;
      ++count;
    }
    if (comment.find("daemon errors") != std::string::npos) {
      EXPECT_THAT(errors, HasSubstr("\nDaemon errors")) << function;
    }
  }
  EXPECT_GT(count, comments.size());
}

TEST(ManualPages, TellEveryLineThatFunctionsPrint) {
  size_t count = 0;
  for (const auto& [function, comment] :
       kestrel::test::FunctionComments(KESTREL_SOURCE_DIR "/inc/public/kestrel")) {
    const std::string diagnostics = BlockOf(PageOf(function), ".Sh", "DIAGNOSTICS");
    for (const std::string& line :
         FirstGroups(comment, R"re("((?:\[Kestrel:|Failed |Number of )[^"]+)")re")) {
      EXPECT_THAT(diagnostics, HasSubstr("\n.It Li \"" + line + "\"\n")) << function;
      ++count;
    }
  }
  EXPECT_GT(count, 20U);
}

TEST(ManualPages, SayOfEveryFunctionWhoOwnsWhatAndHowThreadsMayCallIt) {
  for (const std::string& function : Exports()) {
    const std::string description = BlockOf(PageOf(function), ".Sh", "DESCRIPTION");
    EXPECT_THAT(description, HasSubstr("\n.Ss Ownership\n")) << function;
    EXPECT_THAT(description, HasSubstr("\n.Ss Threads\n")) << function;
  }
}

/// What `--help` prints, without the examples.
std::string Help(std::vector<std::string> command) {
  command.emplace_back("--help");
  const std::string text = RunProgram(command).standard_output;
  return text.substr(0, text.find("\nExamples:"));
}

std::set<std::string> Subcommands(const std::string& help) {
  const size_t begin = help.find("\nSubcommands:\n");
  return begin == std::string::npos ? std::set<std::string>()
                                    : FirstGroups(help.substr(begin), R"(\n  ([a-z][a-z-]*))");
}

std::string Joined(const std::vector<std::string>& command) {
  std::string words;
  for (size_t index = 1; index < command.size(); ++index) {
    words += " " + command[index];
  }
  return words;
}

/// Expects the page to have every option of a command.
void ExpectOptionsDescribed(const std::string& page, const std::vector<std::string>& command) {
  const std::set<std::string> options = FirstGroups(Help(command), R"(\n  (?:-\w,)?--([a-z-]+))");
  EXPECT_THAT(options, testing::Contains("help"));
  for (const std::string& option : options) {
    EXPECT_THAT(FirstGroups(page, R"(\n\.It (?:Fl \w , )?Fl -([a-z-]+))"),
                testing::Contains(option))
        << Joined(command);
  }
}

/// Expects the page to have every option of a command and, in turn, of its subcommands; returns how
/// many commands there are.
int ExpectDescribed(const std::string& page, const std::vector<std::string>& command) {
  ExpectOptionsDescribed(page, command);
  const std::set<std::string> subcommands = Subcommands(Help(command));
  if (subcommands.empty()) {
    EXPECT_THAT(page, HasSubstr("\n.It Cm" + Joined(command))) << Joined(command);
  }
  int count = 1;
  for (const std::string& name : subcommands) {
    std::vector<std::string> subcommand = command;
    subcommand.push_back(name);
    count += ExpectDescribed(page, subcommand);
  }
  return count;
}

TEST(ManualPages, DescribeEveryCommandAndOptionOfKestrelctl) {
  EXPECT_GT(ExpectDescribed(Page("man1/kestrelctl.1"), {KESTRELCTL}), 13);
}

TEST(ManualPages, DescribeEveryCommandAndOptionOfTheBoard) {
  EXPECT_GT(ExpectDescribed(Page("man1/kestrel-board.1"), {KESTREL_BOARD}), 13);
}

TEST(ManualPages, DescribeEveryOptionOfTheRelay) {
  const std::string page = Page("man8/kestrel-wifi-relay.8");
  ExpectOptionsDescribed(page, {KESTREL_WIFI_RELAY});
  const std::string help = Help({KESTREL_WIFI_RELAY});
  for (const std::string& path : FirstGroups(help, "=(/[a-z0-9_/-]+)\n")) {
    EXPECT_THAT(page, HasSubstr("\n.Pa " + path));
  }
}

/// The command lines of the examples of `--help`, without what is said of them.
std::set<std::string> Examples(const std::string& program) {
  const std::string help = RunProgram({program, "--help"}).standard_output;
  const size_t begin = help.find("\nExamples:");
  return begin == std::string::npos
             ? std::set<std::string>()
             : FirstGroups(help.substr(begin), R"(\n  (\S+(?: \S+)*)(?=  |\n))");
}

TEST(ManualPages, HaveTheExamplesOfHelp) {
  for (const auto& [program, name] :
       {std::pair{KESTRELCTL, "kestrelctl"}, std::pair{KESTREL_BOARD, "kestrel-board"}}) {
    const std::string page = BlockOf(Page("man1/" + std::string(name) + ".1"), ".Sh", "EXAMPLES");
    const std::set<std::string> examples = Examples(program);
    EXPECT_THAT(examples, SizeIs(testing::Ge(8U)));
    for (const std::string& example : examples) {
      EXPECT_THAT(std::regex_replace(page, std::regex(R"(\\-)"), "-"),
                  HasSubstr("\n" + example + "\n"));
    }
  }
}

/// The numbers that `text` gives as exit statuses.
std::set<std::string> Statuses(const std::string& text) {
  return FirstGroups(text, R"((?:^|[ \n])(\d+)(?=[ \n]))");
}

TEST(ManualPages, HaveTheExitStatusesOfHelp) {
  for (const auto& [program, path] : {std::pair{KESTRELCTL, "man1/kestrelctl.1"},
                                      std::pair{KESTREL_WIFI_RELAY, "man8/kestrel-wifi-relay.8"}}) {
    const std::string help = RunProgram({program, "--help"}).standard_output;
    const size_t begin = help.find("\nExit status: ");
    ASSERT_NE(begin, std::string::npos) << program;
    EXPECT_EQ(Statuses(help.substr(begin)), Statuses(BlockOf(Page(path), ".Sh", "EXIT STATUS")));
  }
}

TEST(ManualPages, TellTheConfigurationAsTheGuideDoes) {
  const std::string page = Page("man7/kestrel_board.7");
  const std::string guide = Content(KESTREL_SOURCE_DIR "/docs/virtual-board.md");
  const std::string toml = guide.substr(guide.find("\nfaults = ["));
  for (const std::string& key :
       FirstGroups(toml.substr(0, toml.find("```")), R"(\n(\[+[a-z.-]+\]+|[a-z-]+ =))")) {
    EXPECT_THAT(page, HasSubstr("\n" + key));
  }
}

}  // namespace
