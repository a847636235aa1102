// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "install/eastl_prefix.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::ProgramResult;
using testing::ContainsRegex;
using testing::HasSubstr;

class EastlChoice : public testing::Test {
 protected:
  /// CMake is kept within the prefix's parent, whatever this machine has installed.
  ProgramResult Configure(const std::string& choice, const std::vector<std::string>& options = {},
                          const std::string& root_in_environment = "") const {
    std::vector<std::string> command = {
        CMAKE_PROGRAM,
        "-G",
        "Ninja",
        "-S",
        std::string(KESTREL_SOURCE_DIR) + "/tests/install/eastl_choice",
        "-B",
        build_.path(),
        "-DKESTREL_EASTL=" + choice,
        "-DCMAKE_FIND_ROOT_PATH=" + prefix_.parent(),
        "-DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY",
        "-DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY",
        "-DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=ONLY"};
    command.insert(command.end(), options.begin(), options.end());
    return kestrel::test::RunProgram(command, {{"EASTL_ROOT", root_in_environment}});
  }

  std::string Root() const { return "-DEASTL_ROOT=" + prefix_.path(); }

  kestrel::test::EastlPrefix prefix_;
  kestrel::test::TemporaryDirectory build_;
};

TEST_F(EastlChoice, AutoTakesAnInstalledEastl) {
  prefix_.AddEastl();
  const ProgramResult result = Configure("auto", {Root()});
  EXPECT_EQ(result.status, 0) << result.standard_error;
  EXPECT_THAT(result.standard_output, HasSubstr("Containers: the system's EASTL (kestrel_EASTL), "
                                                "without EAStdC\n"));
  EXPECT_THAT(result.standard_output, HasSubstr("/src/core/eastl_support.cpp\"\n"));
}

TEST_F(EastlChoice, EnvironmentMayNameTheRoot) {
  prefix_.AddEastl();
  const ProgramResult result = Configure("system", {}, prefix_.path());
  EXPECT_EQ(result.status, 0) << result.standard_error;
}

TEST_F(EastlChoice, AutoFallsBackToTheStandardLibrary) {
  const ProgramResult result = Configure("auto");
  EXPECT_EQ(result.status, 0) << result.standard_error;
  EXPECT_THAT(result.standard_output,
              HasSubstr("Containers: libs/eastl-std, over the C++ standard library\n"));
  EXPECT_THAT(result.standard_output, HasSubstr("Support sources: \"\"\n"));
}

TEST_F(EastlChoice, StdIgnoresAnInstalledEastl) {
  prefix_.AddEastl();
  const ProgramResult result = Configure("std", {Root()});
  EXPECT_THAT(result.standard_output, HasSubstr("Containers: libs/eastl-std"));
}

TEST_F(EastlChoice, SystemTakesEastdcWhereItIsInstalled) {
  prefix_.AddEastl();
  prefix_.AddEastdc();
  const ProgramResult result = Configure("system", {Root()});
  EXPECT_THAT(result.standard_output,
              HasSubstr("Containers: the system's EASTL (kestrel_EASTL) with EAStdC"));
}

TEST_F(EastlChoice, SystemTakesTheTargetsOfPackageManagers) {
  for (const char* target : {"EASTL", "EASTL::EASTL"}) {
    prefix_.AddEastlPackage(target);
    const ProgramResult result = Configure("system", {"-DCMAKE_PREFIX_PATH=" + prefix_.path()});
    EXPECT_THAT(result.standard_output,
                HasSubstr(std::string("the system's EASTL (") + target + ")"));
  }
}

void ExpectNotFound(const ProgramResult& result) {
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(
      result.standard_error,
      ContainsRegex("\n *KESTREL_EASTL=system found no EASTL: install EASTL and EABase, set "
                    "EASTL_ROOT or CMAKE_PREFIX_PATH to where they are, or take "
                    "-DKESTREL_EASTL=std\\.\n"));
}

TEST_F(EastlChoice, SystemWithoutEastlSaysInOneLineWhatToDo) {
  ExpectNotFound(Configure("system"));
}

TEST_F(EastlChoice, SystemNeedsTheLibraryBesideTheHeaders) {
  ExpectNotFound(Configure("system", {Root()}));
}

TEST_F(EastlChoice, SystemNeedsEabase) {
  prefix_.AddEastl();
  std::filesystem::remove_all(prefix_.path() + "/include/EABase");
  ExpectNotFound(Configure("system", {Root()}));
}

TEST_F(EastlChoice, VariablesOfAnEnclosingProjectAreNoEastl) {
  ExpectNotFound(Configure("system", {"-Dinclude_dir=/elsewhere", "-Dlibrary=/elsewhere/lib.a"}));
}

TEST_F(EastlChoice, AnyOtherValueIsRefused) {
  for (const char* value : {"System", "yes", "", "std;auto"}) {
    const ProgramResult result = Configure(value);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standard_error, HasSubstr("KESTREL_EASTL is \"" + std::string(value) +
                                                 "\"; it can be auto, system or std.\n"));
  }
}

}  // namespace
