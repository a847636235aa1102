// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <kestrel/log.h>
#include <unistd.h>
#include <wchar.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

#include "support/broken_standard_error.h"
#include "support/outcome.h"

namespace kestrel::test {
namespace {

using Export = int (*)(const char* fmt, ...);

int CallVarArgs(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = Log_DebugVarArgs(fmt, args);
  va_end(args);
  return result;
}

struct NamedExport {
  const char* name;
  Export function;
};

/// Each test runs on both exports.
class LogExports : public testing::TestWithParam<NamedExport> {
 protected:
  template <typename... Arguments>
  Observed ObserveLog(const char* fmt, Arguments... arguments) {
    return Observe([&] { return GetParam().function(fmt, arguments...); });
  }
};

INSTANTIATE_TEST_SUITE_P(Both, LogExports,
                         testing::Values(NamedExport{"Log_Debug", Log_Debug},
                                         NamedExport{"Log_DebugVarArgs", CallVarArgs}),
                         [](const auto& test) { return test.param.name; });

std::string FormattingError(int error) {
  return "[Kestrel:Log] error formatting debug message: -1 and errno: " +
         std::string(strerror(error)) + "\n";
}

TEST_P(LogExports, WriteTheFormattedTextAndReturnZero) {
  EXPECT_THAT(ObserveLog("%d\n", 5), Returns(0, "5\n"));
}

TEST_P(LogExports, PassEveryArgumentOn) {
  EXPECT_THAT(ObserveLog("%s %c %#x %.2f %lld %%", "text", 'c', 255, 1.5, -1099511627776LL),
              Returns(0, "text c 0xff 1.50 -1099511627776 %"));
}

TEST_P(LogExports, AddNoNewline) { EXPECT_THAT(ObserveLog("no end"), Returns(0, "no end")); }

TEST_P(LogExports, AcceptAnEmptyFormat) { EXPECT_THAT(ObserveLog(""), Returns(0, "")); }

TEST_P(LogExports, WriteLongTextsWhole) {
  const std::string text(100000, 'x');
  EXPECT_THAT(ObserveLog("%s", text.c_str()), Returns(0, text));
}

TEST_P(LogExports, RefuseANullFormat) {
  EXPECT_THAT(ObserveLog(nullptr), IsRefused(EFAULT));
  EXPECT_THAT(ObserveLog("still works"), Returns(0, "still works"));
}

TEST_P(LogExports, StoreTheCountOfCharactersForTheCaller) {
  char writable_format[] = "four%n and more";  // a fortified formatter would end the process
  int count = -1;
  EXPECT_THAT(ObserveLog(writable_format, &count), Returns(0, "four and more"));
  EXPECT_EQ(count, 4);
}

TEST_P(LogExports, KeepTheErrnoOfAClosedStandardError) {
  EXPECT_THAT(Observe([&] {
                const ClosedStandardError closed;
                return GetParam().function("lost");
              }),
              Fails(EBADF, ""));
}

TEST_P(LogExports, KeepTheErrnoOfAFullStandardError) {
  EXPECT_THAT(Observe([&] {
                const FullStandardError full;
                return GetParam().function("lost");
              }),
              Fails(ENOSPC, ""));
}

TEST_P(LogExports, WorkAgainOnceStandardErrorDoes) {
  {
    const FullStandardError full;
    EXPECT_EQ(GetParam().function("lost"), -1);
  }
  EXPECT_THAT(ObserveLog("found"), Returns(0, "found"));
}

constexpr wint_t kNotInTheLocale = 0x20AC;

TEST_P(LogExports, ReportACharacterThatCannotBeWritten) {
  EXPECT_THAT(ObserveLog("%lc", kNotInTheLocale), Fails(EILSEQ, FormattingError(EILSEQ)));
}

TEST_P(LogExports, KeepTheFormattersErrnoWhenTheReportFailsAsWell) {
  EXPECT_THAT(Observe([&] {
                const FullStandardError full;
                return GetParam().function("%lc", kNotInTheLocale);
              }),
              Fails(EILSEQ, ""));
}

TEST_P(LogExports, WriteEachReportAtOnce) {
  const PacketStandardError packets;
  EXPECT_EQ(GetParam().function("%lc", kNotInTheLocale), -1);
  EXPECT_THAT(packets.Received(), testing::ElementsAre(FormattingError(EILSEQ)));
}

TEST_P(LogExports, KeepTheOrderOfTheStreamAndLeaveItUnflushed) {
  EXPECT_THAT(Observe([] {
                const BufferedStandardError buffered;
                fputs("before, ", stderr);
                GetParam().function("%s, ", "logged");
                fputs("after", stderr);
                EXPECT_EQ(lseek(STDERR_FILENO, 0, SEEK_CUR), 0);  // nothing is written yet
                return fflush(stderr);
              }),
              Returns(0, "before, logged, after"));
}

TEST_P(LogExports, ReportATextLongerThanACountCanSay) {
  EXPECT_THAT(ObserveLog("%2147483648d", 5), Fails(EOVERFLOW, FormattingError(EOVERFLOW)));
}

}  // namespace
}  // namespace kestrel::test
