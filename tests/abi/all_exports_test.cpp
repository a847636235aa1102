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
  const kestrel::test::ProgramResult result =
      kestrel::test::RunProgram({KESTREL_BOARD_PROGRAM, "run", GetParam()});
  EXPECT_EQ(result.status, 0) << result.standard_error;
}

TEST_P(AllExports, AreAllUsedByThatProgram) {
  const std::set<std::string> used = kestrel::test::Imports(GetParam());
  for (const std::string& name : kestrel::test::Exports(KESTREL_LIBRARY)) {
    EXPECT_EQ(used.count(name), 1u) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Languages, AllExports, testing::Values(ALL_EXPORTS_C, ALL_EXPORTS_CXX),
                         [](const auto& program) { return program.index == 0 ? "C" : "Cxx"; });

}  // namespace
