// SPDX-License-Identifier: Apache-2.0
// Where a warning of the compiler ends a build, and where it must not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "install/eastl_prefix.h"
#include "install/manual_page.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::Content;
using kestrel::test::ProgramResult;
using kestrel::test::RunProgram;
using testing::HasSubstr;
using testing::Not;

/// Builds one source of the library with an EASTL whose headers have a fault that every compiler
/// sees, and one that an optimiser sees in the code of ours into which it puts theirs.
class Warnings : public testing::Test {
 protected:
  Warnings() {
    prefix_.AddEastl();
    const std::string header = prefix_.path() + "/include/EASTL/string.h";
    std::string text = Content(header);
    const std::string size = "size_type size() const noexcept { return text_.size(); }";
    const size_t position = text.find(size);
    EXPECT_NE(position, std::string::npos);
    text.replace(position, size.size(), R"(size_type size() const noexcept {
      struct Unset { size_type value; Unset() {} } unset;
      { const int unset = 0; (void)unset; }
      return text_.size() + unset.value;
    })");
    std::ofstream(header) << text;
  }

  void Configure(std::vector<std::string> options) const {
    std::vector<std::string> command = {CMAKE_PROGRAM,
                                        "-G",
                                        "Ninja",
                                        "-S",
                                        KESTREL_SOURCE_DIR,
                                        "-B",
                                        build_,
                                        "-DKESTREL_EASTL=system",
                                        "-DCMAKE_BUILD_TYPE=MinSizeRel",
                                        "-DKESTREL_BUILD_TESTS=OFF",
                                        "-DKESTREL_BUILD_BOARD=OFF",
                                        "-DKESTREL_BUILD_RELAY=OFF",
                                        "-DKESTREL_BUILD_TOOLS=OFF",
                                        "-DKESTREL_BUILD_EXAMPLES=OFF",
                                        std::string("-DCMAKE_CXX_COMPILER=") + CXX_COMPILER,
                                        std::string("-DCMAKE_C_COMPILER=") + C_COMPILER};
    command.insert(command.end(), options.begin(), options.end());
    kestrel::test::Require(command);
  }

  ProgramResult Build() const {
    return RunProgram({CMAKE_PROGRAM, "--build", build_, "--target",
                       "src/CMakeFiles/kestrel_objects.dir/wifi/bssid.cpp.o"});
  }

  /// The optimiser's warning is the proof that the headers were read.
  void ExpectBuilt() const {
    const ProgramResult built = Build();
    EXPECT_EQ(built.status, 0) << built.standard_output;
    EXPECT_THAT(built.standard_output, HasSubstr("[-Wuninitialized]"));
    EXPECT_THAT(built.standard_output, Not(HasSubstr("[-Wshadow]")));
  }

  kestrel::test::EastlPrefix prefix_;
  const std::string build_ = prefix_.parent() + "/build";
};

TEST_F(Warnings, OfEastlStopNoBuild) {
  Configure({"-DEASTL_ROOT=" + prefix_.path()});
  ExpectBuilt();
  EXPECT_THAT(Content(build_ + "/compile_commands.json"), Not(HasSubstr("-Werror")));
}

TEST_F(Warnings, OfEastlStopNoBuildInWhichWarningsAreErrors) {
  Configure({"-DEASTL_ROOT=" + prefix_.path(), "-DCMAKE_COMPILE_WARNING_AS_ERROR=ON"});
  ExpectBuilt();
  EXPECT_THAT(Content(build_ + "/compile_commands.json"), HasSubstr("-Werror"));
}

TEST_F(Warnings, OfEastlStopNoBuildThatHasItsTargetFromElsewhere) {
  prefix_.AddEastlPackage("EASTL");
  Configure({"-DCMAKE_PREFIX_PATH=" + prefix_.path(), "-DCMAKE_COMPILE_WARNING_AS_ERROR=ON"});
  ExpectBuilt();
}

/// What CMake says of a preset, which it is not made to configure.
std::string VariablesOf(const std::string& preset) {
  const kestrel::test::TemporaryDirectory empty;
  return RunProgram({"env", "-C", KESTREL_SOURCE_DIR, CMAKE_PROGRAM, "--preset", preset, "-N", "-B",
                     empty.path()})
      .standard_output;
}

TEST(WarningsOfOurs, AreErrorsInThePresetsOfDevelopers) {
  for (const char* preset : {"dev", "asan", "tsan", "fuzz", "ship", "armhf", "arm64", "lint"}) {
    EXPECT_THAT(VariablesOf(preset), HasSubstr("CMAKE_COMPILE_WARNING_AS_ERROR=\"ON\"")) << preset;
  }
}

TEST(WarningsOfOurs, AreNoErrorsInThePresetsOfUsers) {
  for (const char* preset : {"demo", "release", "armhf-release"}) {
    EXPECT_THAT(VariablesOf(preset), HasSubstr("CMAKE_COMPILE_WARNING_AS_ERROR=\"OFF\"")) << preset;
  }
}

}  // namespace
