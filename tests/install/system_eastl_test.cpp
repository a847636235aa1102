// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "abi/elf_report.h"
#include "abi/promised_names.h"
#include "install/eastl_prefix.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::ProgramResult;
using kestrel::test::RunProgram;

/// Builds the library alone, as somebody with EASTL installed would.
class SystemEastl : public testing::Test {
 protected:
  void Build(const std::string& where_eastl_is) const {
    const ProgramResult configured = RunProgram(
        {CMAKE_PROGRAM, "-G", "Ninja", "-S", KESTREL_SOURCE_DIR, "-B", build_.path(),
         "-DKESTREL_EASTL=system", where_eastl_is, "-DKESTREL_BUILD_TESTS=OFF",
         "-DKESTREL_BUILD_BOARD=OFF", "-DKESTREL_BUILD_TOOLS=OFF", "-DKESTREL_BUILD_EXAMPLES=OFF",
         std::string("-DCMAKE_CXX_COMPILER=") + CXX_COMPILER,
         std::string("-DCMAKE_C_COMPILER=") + C_COMPILER});
    ASSERT_EQ(configured.status, 0) << configured.standard_error;
    EXPECT_THAT(configured.standard_output, testing::HasSubstr("Containers: the system's EASTL"));
    const ProgramResult built =
        RunProgram({CMAKE_PROGRAM, "--build", build_.path(), "--target", "kestrel"});
    ASSERT_EQ(built.status, 0) << built.standard_output;
  }

  std::string Library() const { return build_.path() + "/lib/libkestrel.so.0"; }

  void ExpectTheUsualExports() const {
    EXPECT_EQ(kestrel::test::Exports(Library()), kestrel::test::Exports(KESTREL_LIBRARY));
    EXPECT_EQ(kestrel::test::Exports(Library()),
              kestrel::test::GlobalNames(KESTREL_SOURCE_DIR "/src/kestrel.map"));
  }

  kestrel::test::EastlPrefix prefix_;
  kestrel::test::TemporaryDirectory build_;
};

TEST_F(SystemEastl, FromEastlRootLinksAndAddsNoExport) {
  prefix_.AddEastl();
  Build("-DEASTL_ROOT=" + prefix_.path());
  ExpectTheUsualExports();
}

TEST_F(SystemEastl, FromThePrefixPathLinksWithEastdcAndAddsNoExport) {
  prefix_.AddEastl();
  prefix_.AddEastdc();
  Build("-DCMAKE_PREFIX_PATH=" + prefix_.path());
  ExpectTheUsualExports();
}

}  // namespace
