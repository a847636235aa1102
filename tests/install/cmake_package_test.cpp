// SPDX-License-Identifier: Apache-2.0
// What find_package says of the installed library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "install/eastl_prefix.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::ProgramResult;
using kestrel::test::Require;
using kestrel::test::RunProgram;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class CMakePackage : public testing::Test {
 protected:
  void SetUp() override {
    Require({CMAKE_PROGRAM, "--install", KESTREL_BUILD_DIR, "--prefix", prefix_.path()});
  }

  /// Finds the package with the given arguments in a project without compilers.
  ProgramResult Find(const std::string& arguments) const {
    const kestrel::test::TemporaryDirectory project;
    project.Write("CMakeLists.txt",
                  "cmake_minimum_required(VERSION 3.25)\n"
                  "project(finder LANGUAGES NONE)\n"
                  "set_property(GLOBAL PROPERTY TARGET_SUPPORTS_SHARED_LIBS ON)\n"
                  "find_package(Kestrel " +
                      arguments +
                      ")\n"
                      "message(\"found: ${Kestrel_FOUND}\")\n");
    return RunProgram({CMAKE_PROGRAM, "-S", project.path(), "-B", project.path() + "/build",
                       "-DCMAKE_PREFIX_PATH=" + prefix_.path()});
  }

  /// Makes the installed package one of another version.
  void SetVersion(const std::string& version) const {
    Require({"sed", "-i", "s/" KESTREL_VERSION "/" + version + "/g",
             prefix_.path() + "/" KESTREL_LIBDIR "/cmake/Kestrel/KestrelConfigVersion.cmake"});
  }

  void ExpectFound(const std::string& arguments, const std::string& whether) const {
    EXPECT_THAT(Find(arguments).standard_error, HasSubstr("found: " + whether + "\n")) << arguments;
  }

  kestrel::test::TemporaryDirectory prefix_;
};

TEST_F(CMakePackage, HasTheLibraryAsItsComponent) {
  ExpectFound("REQUIRED", "1");
  ExpectFound("REQUIRED COMPONENTS kestrel", "1");
  ExpectFound("REQUIRED OPTIONAL_COMPONENTS telepathy", "1");
}

TEST_F(CMakePackage, NamesItsComponentsWhenThereIsNoneOfAName) {
  const ProgramResult result = Find("REQUIRED COMPONENTS kestrel telepathy");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(
      result.standard_error,
      AllOf(HasSubstr("there is no component \"telepathy\" of Kestrel; the components are:"),
            Not(HasSubstr("found: 1"))));
}

TEST_F(CMakePackage, OfANewerMinorVersionIsAnotherInterface) {
  SetVersion("0.9.0");
  ExpectFound("0.1", "0");
  ExpectFound("0.9", "1");
}

TEST_F(CMakePackage, OfANewerPatchWillDo) {
  SetVersion("0.1.7");
  ExpectFound("0.1", "1");
  ExpectFound("0.1.6", "1");
  ExpectFound("0.1.8", "0");
}

}  // namespace
