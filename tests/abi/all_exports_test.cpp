// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "abi/elf_report.h"
#include "support/run_program.h"

namespace {

class AllExports : public testing::TestWithParam<const char*> {};

TEST_P(AllExports, CanBeCalledFromAPlainProgram) {
  // On a board, so that it opens no chip of this machine.
  const kestrel::test::ProgramResult result = kestrel::test::RunProgram(
      {KESTREL_BOARD_PROGRAM, "run", std::string(PROGRAM_FOLDER "/") + GetParam()});
  EXPECT_EQ(result.status, 0) << result.standard_error;
}

TEST_P(AllExports, AreAllUsedByThatProgram) {
  const std::set<std::string> used =
      kestrel::test::Imports(std::string(BUILT_PROGRAM_FOLDER "/") + GetParam());
  for (const std::string& name : kestrel::test::Exports(KESTREL_LIBRARY)) {
    EXPECT_EQ(used.count(name), 1u) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Languages, AllExports, testing::Values("all_exports_c", "all_exports_cxx"),
                         [](const auto& program) { return program.index == 0 ? "C" : "Cxx"; });

}  // namespace
