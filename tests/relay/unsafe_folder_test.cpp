// SPDX-License-Identifier: Apache-2.0
// What the relay says of folders where others could take the place of a socket.
#include <sys/stat.h>

#include <filesystem>

#include "relay/relay_fixture.h"

namespace kestrel::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RelayFolder : public WithSupplicant {
 protected:
  /// The command of a relay whose three paths lie in folders of their own.
  Words PathsOf(const std::string& socket, const std::string& supplicant,
                const std::string& links) const {
    return {KESTREL_WIFI_RELAY,
            "--socket",
            socket + "/socket",
            "--supplicant",
            supplicant + "/supplicant",
            "--client-dir",
            links};
  }

  std::string Make(const std::string& name, mode_t mode) const {
    std::filesystem::create_directory(In(name));
    EXPECT_EQ(chmod(In(name).c_str(), mode), 0);
    return In(name);
  }

  static std::string Warning(const std::string& place, const std::string& risk) {
    return "kestrel-wifi-relay: others could take the place of " + place + ": " + risk;
  }
};

TEST_F(RelayFolder, ThatIsSafeIsNotTalkedAbout) {
  Start({"--strict"});
  EXPECT_THAT(Stop().standard_error, StartsWith("kestrel-wifi-relay: listening at "));
}

TEST_F(RelayFolder, WhereOthersCanWriteIsWarnedOf) {
  const std::string sticky = Make("sticky", 01777);
  StartCommand(PathsOf(sticky, sticky, sticky));
  const std::string risk = "everybody can write to " + sticky + "\n";
  EXPECT_THAT(Stop().standard_error,
              StartsWith(Warning(sticky + "/socket", risk) + Warning(sticky, risk) +
                         Warning(sticky + "/supplicant", risk)));
}

TEST_F(RelayFolder, OneOfSeveralOnTheWayWhereOthersCanWriteIsWarnedOfEachTime) {
  const std::string outer = Make("outer", 0777);
  const std::string inner = Make("outer/inner", 0777);
  const std::string safe = Make("safe", 0755);
  StartCommand(PathsOf(inner, safe, safe));
  EXPECT_THAT(Stop().standard_error,
              StartsWith(Warning(inner + "/socket", "everybody can write to " + outer + "\n") +
                         Warning(inner + "/socket", "everybody can write to " + inner + "\n") +
                         "kestrel-wifi-relay: listening at "));
}

TEST_F(RelayFolder, WhereOthersCanWriteIsRefusedIfAskedTo) {
  const std::string safe = Make("safe", 0755);
  const std::string of_all = Make("all", 0777);
  for (const Words& paths :
       {PathsOf(of_all, safe, safe), PathsOf(safe, of_all, safe), PathsOf(safe, safe, of_all)}) {
    Words command = paths;
    command.emplace_back("--strict");
    const ProgramResult result = RunBriefly(command, {{"JOURNAL_STREAM", ""}});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standard_error,
                AllOf(HasSubstr(": everybody can write to " + of_all + " (--strict)\n"),
                      Not(HasSubstr("listening"))));
  }
  EXPECT_TRUE(std::filesystem::is_empty(of_all));
}

TEST_F(RelayFolder, OfTheSupplicantMayBeOfTheGroupThatUsesIt) {
  const std::string safe = Make("safe", 0755);
  Words command = PathsOf(safe, Make("supplicants", 0770), Make("links", 0755));
  command.emplace_back("--strict");
  StartCommand(command);
  EXPECT_THAT(Stop().standard_error, StartsWith("kestrel-wifi-relay: listening at "));
}

TEST_F(RelayFolder, OfLinksThatIsALinkIsRefused) {
  std::filesystem::create_symlink(Make("elsewhere", 0755), In("link"));
  const ProgramResult result =
      RunBriefly(PathsOf(folder_.path(), folder_.path(), In("link")), {{"JOURNAL_STREAM", ""}});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error,
            "kestrel-wifi-relay: cannot use " + In("link") + " for links: it is a symbolic link\n");
  EXPECT_FALSE(std::filesystem::exists(In("socket")));
}

}  // namespace
}  // namespace kestrel::test
