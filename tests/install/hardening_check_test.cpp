// SPDX-License-Identifier: Apache-2.0
// What scripts/hardening says of programs and libraries that lack a protection.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "install/eastl_prefix.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::ProgramResult;
using testing::HasSubstr;

constexpr char kSource[] = R"(
#include <stdio.h>
#include <string.h>
int main(int count, char** arguments) {
  char copy[16];
  strcpy(copy, arguments[count - 1]);
  return puts(copy);
}
)";

#ifdef __x86_64__
constexpr char kMarks[] = "-Wl,-z,shstk";
#else
constexpr char kMarks[] = "-Wl,-z,noexecstack";
#endif

class HardeningCheck : public testing::Test {
 protected:
  std::string path() const { return folder_.path() + "/built"; }

  /// Checks what is compiled with every protection and then the given options, which the compiler
  /// heeds instead.
  ProgramResult CheckWith(const std::vector<std::string>& options,
                          const std::string& marks = kMarks) const {
    std::vector<std::string> command = {C_COMPILER,
                                        folder_.Write("source.c", kSource),
                                        "-o",
                                        path(),
                                        "-O2",
                                        "-w",
                                        "-fPIE",
                                        "-pie",
                                        "-fstack-protector-strong",
                                        "-Wl,-z,relro,-z,now",
                                        "-U_FORTIFY_SOURCE",
                                        "-D_FORTIFY_SOURCE=2",
                                        marks};
    command.insert(command.end(), options.begin(), options.end());
    kestrel::test::Require(command);
    return kestrel::test::RunProgram({KESTREL_SOURCE_DIR "/scripts/hardening", folder_.path()});
  }

  void ExpectFound(const std::vector<std::string>& options, const std::string& lack) const {
    const ProgramResult result = CheckWith(options);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standard_error, HasSubstr(path() + ": " + lack + "\n"));
  }

  kestrel::test::TemporaryDirectory folder_;
};

TEST_F(HardeningCheck, PassesWhatHasEveryProtection) {
  const ProgramResult result = CheckWith({});
  EXPECT_EQ(result.status, 0) << result.standard_error;
  EXPECT_EQ(result.standard_output, "ok: 1 programs and libraries are hardened\n");
}

TEST_F(HardeningCheck, FindsAFixedAddress) {
  ExpectFound({"-fno-pie", "-no-pie"}, "not position-independent");
}

TEST_F(HardeningCheck, FindsTablesThatStayWritable) {
  ExpectFound({"-Wl,-z,norelro"}, "no RELRO");
  ExpectFound({"-Wl,-z,lazy"}, "does not bind all symbols at the start");
}

TEST_F(HardeningCheck, FindsMemoryThatCanBeWrittenAndRun) {
  ExpectFound({"-Wl,-z,execstack"}, "does not say that the stack is for data");
  ExpectFound({"-Wl,-z,execstack"}, "has memory that can be written and run");
}

TEST_F(HardeningCheck, FindsCodeWithoutChecks) {
  ExpectFound({"-fno-stack-protector"}, "no stack protector");
  ExpectFound({"-U_FORTIFY_SOURCE"}, "no call is fortified");
}

#ifdef __x86_64__
TEST_F(HardeningCheck, FindsMissingMarks) {
  EXPECT_THAT(CheckWith({}, "-w").standard_error, HasSubstr("not marked for the shadow stack\n"));
  ExpectFound({"-no-pie", "-shared", "-fPIC"}, "not marked for jumps to marked targets alone");
}
#endif

TEST_F(HardeningCheck, DoesNotPassAnEmptyFolder) {
  const ProgramResult result =
      kestrel::test::RunProgram({KESTREL_SOURCE_DIR "/scripts/hardening", folder_.path()});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.standard_error, HasSubstr("no program or library\n"));
}

}  // namespace
