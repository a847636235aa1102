// SPDX-License-Identifier: Apache-2.0
// What somebody gets who builds the library among the targets of another project.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "install/eastl_prefix.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

namespace fs = std::filesystem;
using kestrel::test::ProgramResult;
using kestrel::test::Require;
using kestrel::test::RunProgram;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class Subproject : public testing::Test {
 protected:
  void Configure(const std::vector<std::string>& options = {}) const {
    const std::string source = KESTREL_SOURCE_DIR "/tests/install/subproject";
    std::vector<std::string> command = {CMAKE_PROGRAM, "-G", "Ninja",       "-S",
                                        source,        "-B", build_.path(), "-DKESTREL_EASTL=std"};
    command.push_back(std::string("-DKESTREL=") + KESTREL_SOURCE_DIR);
    command.push_back(std::string("-DCMAKE_C_COMPILER=") + C_COMPILER);
    command.push_back(std::string("-DCMAKE_CXX_COMPILER=") + CXX_COMPILER);
    command.insert(command.end(), options.begin(), options.end());
    Require(command);
  }

  /// What Ninja would do to build everything, a step a line.
  std::string Steps() const {
    return RunProgram({NINJA_PROGRAM, "-C", build_.path(), "-n"}).standard_output;
  }

  /// Links the application with the objects that the build of the tests has.
  void Build() const {
    for (const char* objects :
         {"src/CMakeFiles/kestrel_objects.dir", "libs/libnwl/CMakeFiles/nwl_objects.dir"}) {
      fs::copy(fs::path(KESTREL_BUILD_DIR) / objects, fs::path(build_.path()) / "kestrel" / objects,
               fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }
    Require({"sh", "-c",
             "cd '" + build_.path() +
                 "' && '" NINJA_PROGRAM "' -t commands application |"
                 " grep -v '_objects.dir/.* -c ' | sh -e"});
  }

  void ExpectThatItRuns() const {
    const ProgramResult result = RunProgram({build_.path() + "/application"});
    EXPECT_EQ(result.standard_error, "from C 11\n");
  }

  /// The files that are installed.
  std::string Installed(const std::string& component) const {
    Require({CMAKE_PROGRAM, "--install", build_.path(), "--prefix", prefix_.path(), "--component",
             component});
    return RunProgram({"find", prefix_.path(), "-type", "f"}).standard_output;
  }

  kestrel::test::TemporaryDirectory build_;
  kestrel::test::TemporaryDirectory prefix_;
};

TEST_F(Subproject, BuildsTheLibraryAlone) {
  Configure();
  const std::string steps = Steps();
  EXPECT_THAT(steps, ContainsRegex("Linking CXX shared library [^\n]*libkestrel\\.so"));
  EXPECT_LT(std::count(steps.begin(), steps.end(), '\n'), 70) << steps;
  for (const char* other : {"kestrelctl", "kestrel-board", "relay", "gpio_blink", "_test"}) {
    EXPECT_THAT(steps, Not(HasSubstr(other)));
  }
}

TEST_F(Subproject, LinksWithTheTargetThatTheInstalledPackageHas) {
  Configure();
  Build();
  ExpectThatItRuns();
}

TEST_F(Subproject, IsTheSameThroughFetchContent) {
  Configure({"-DWITH_FETCH_CONTENT=ON"});
  const std::string steps = Steps();
  EXPECT_LT(std::count(steps.begin(), steps.end(), '\n'), 70) << steps;
  Build();
  ExpectThatItRuns();
}

TEST_F(Subproject, InstallsNothing) {
  Configure();
  for (const char* component : {"Runtime", "Development", "Tools", "Board", "Relay"}) {
    EXPECT_EQ(Installed(component), "") << component;
  }
}

TEST_F(Subproject, BuildsAndInstallsWhatIsAskedFor) {
  Configure({"-DKESTREL_INSTALL=ON", "-DKESTREL_BUILD_TOOLS=ON"});
  EXPECT_THAT(Steps(), HasSubstr("kestrelctl"));
  Build();
  EXPECT_THAT(Installed("Development"), HasSubstr("/include/kestrel/kestrel.h\n"));
}

}  // namespace
