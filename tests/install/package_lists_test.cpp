// SPDX-License-Identifier: Apache-2.0
// What ./dev installs on a machine that has none of it. Nothing is installed here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "install/manual_page.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::ProgramResult;
using kestrel::test::RunProgram;
using testing::HasSubstr;

class PackageLists : public testing::Test {
 protected:
  PackageLists() {
    AddProgram("dpkg-query", "exit 1");
    AddProgram("apt-get", "exit 7");
    AddProgram("id", "echo 0");
  }

  /// The packages that the verb would have apt install.
  std::set<std::string> Wanted(const std::vector<std::string>& verb) const {
    const std::string dev = KESTREL_SOURCE_DIR "/dev";
    const std::string script =
        "PATH='" + tools_.path() + "':$PATH XDG_CACHE_HOME='" + tools_.path() + R"(' "$@")";
    std::vector<std::string> command = {"sh", "-c", script, "sh", dev};
    command.insert(command.end(), verb.begin(), verb.end());
    const ProgramResult result = RunProgram(command);
    EXPECT_EQ(result.status, 7) << result.standard_error;
    const std::string said = "== Installing from Debian: ";
    const size_t position = result.standard_output.find(said);
    EXPECT_NE(position, std::string::npos) << result.standard_output;
    std::istringstream line(result.standard_output.substr(position + said.size()));
    std::set<std::string> packages;
    for (std::string package; line >> package;) {
      packages.insert(package);
    }
    return packages;
  }

 private:
  void AddProgram(const std::string& name, const std::string& script) const {
    const std::string path = tools_.Write(name, "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  }

  kestrel::test::TemporaryDirectory tools_;
};

TEST_F(PackageLists, OfTheDemoHaveWhatItIsBuiltWithAlone) {
  EXPECT_EQ(Wanted({"demo"}),
            (std::set<std::string>{"cmake", "g++", "libcli11-dev", "libtomlplusplus-dev",
                                   "ninja-build", "nlohmann-json3-dev"}));
}

TEST_F(PackageLists, OfTheTestsHaveNoToolsOfOtherStages) {
  const std::set<std::string> packages = Wanted({"test"});
  EXPECT_EQ(packages.count("libgtest-dev"), 1u);
  for (const char* other : {"devscripts", "libbenchmark-dev", "clang-format", "lintian", "jq"}) {
    EXPECT_EQ(packages.count(other), 0u) << other;
  }
}

TEST_F(PackageLists, OfThePresetsForUsersHaveNothingOfTheTests) {
  const std::set<std::string> packages = Wanted({"stage", "presets"});
  for (const char* other :
       {"libbenchmark-dev", "libgtest-dev", "wpasupplicant", "qemu-user-static"}) {
    EXPECT_EQ(packages.count(other), 0u) << other;
  }
}

TEST_F(PackageLists, AreExplainedInTheReadme) {
  const std::string readme = kestrel::test::Content(KESTREL_SOURCE_DIR "/README.md");
  for (const std::vector<std::string>& verb : {std::vector<std::string>{"test", "--arm"},
                                               {"check", "lint", "arm64", "demo"},
                                               {"machine"},
                                               {"package"},
                                               {"bench"},
                                               {"fuzz"},
                                               {"format"}}) {
    for (const std::string& package : Wanted(verb)) {
      EXPECT_THAT(readme, HasSubstr("`" + package + "`"));
    }
  }
}

TEST(ReleasePreset, NeedsNoLibraryOfTestsOrBenchmarks) {
  const kestrel::test::TemporaryDirectory build;
  const ProgramResult result = RunProgram(
      {"env", "-C", KESTREL_SOURCE_DIR, CMAKE_PROGRAM, "--preset", "release", "-B", build.path(),
       "-DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON", "-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON"});
  EXPECT_EQ(result.status, 0) << result.standard_error;
}

}  // namespace
