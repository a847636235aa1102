// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::ProgramResult;

/// The compilers of C and C++, which have to see the same in a call.
class FormatAttributes : public testing::TestWithParam<const char*> {
 protected:
  ProgramResult Compile(const std::string& call) const {
    const std::string source = directory_.Write(
        "call.c", "#include <kestrel/log.h>\nvoid Call(va_list args);\nvoid Call(va_list args) { " +
                      call + "; (void)args; }\n");
    return kestrel::test::RunProgram(
        {C_COMPILER, "-x", GetParam(), "-fsyntax-only", "-Werror=format",
         std::string("-I") + KESTREL_INCLUDE, source},
        {{"LC_ALL", "C"}});
  }

  void ExpectAccepted(const std::string& call) const {
    const ProgramResult result = Compile(call);
    EXPECT_EQ(result.status, 0) << result.standard_error;
  }

  void ExpectRefused(const std::string& call) const {
    const ProgramResult result = Compile(call);
    EXPECT_NE(result.status, 0) << call;
    EXPECT_THAT(result.standard_error, testing::HasSubstr("[-Werror=format"));
  }

  kestrel::test::TemporaryDirectory directory_;
};

INSTANTIATE_TEST_SUITE_P(In, FormatAttributes, testing::Values("c", "c++"), [](const auto& test) {
  return std::string(test.param).substr(0, 1) + (test.index == 0 ? "" : "xx");
});

TEST_P(FormatAttributes, LetMatchingArgumentsPass) {
  ExpectAccepted(R"(Log_Debug("%s %d", "text", 5))");
  ExpectAccepted(R"(Log_DebugVarArgs("%s %d", args))");
}

TEST_P(FormatAttributes, FindArgumentsThatDoNotMatch) {
  ExpectRefused(R"(Log_Debug("%s", 5))");
  ExpectRefused(R"(Log_Debug("%d"))");
}

TEST_P(FormatAttributes, FindConversionsThatDoNotExist) {
  ExpectRefused(R"(Log_DebugVarArgs("%y", args))");
}

}  // namespace
