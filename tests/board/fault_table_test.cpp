// SPDX-License-Identifier: Apache-2.0
#include "server/fault_table.h"

#include <errno.h>
#include <gtest/gtest.h>

#include "host/error.h"

namespace kestrel::board {
namespace {

const FaultVocabulary kVocabulary = {
    {"/dev/gpiochip0", "/dev/ttyS1"}, {"/dev/ttyS1"}, {"/run/wifi"}, {"line"}};

Fault Parse(const std::string& text) { return ParseFault(text, kVocabulary); }

TEST(FaultText, NamesCallThingErrnoAndOccurrence) {
  const Fault fault = Parse("ioctl:GPIO_GET_CHIPINFO_IOCTL=EIO@3");
  EXPECT_EQ(fault.call, "ioctl");
  EXPECT_EQ(fault.what, "GPIO_GET_CHIPINFO_IOCTL");
  EXPECT_EQ(fault.error, EIO);
  EXPECT_EQ(fault.occurrence, 3U);
}

TEST(FaultText, ThingAndOccurrenceMayBeLeftOut) {
  const Fault fault = Parse("open=ENOENT");
  EXPECT_EQ(fault.call, "open");
  EXPECT_EQ(fault.what, "");
  EXPECT_EQ(fault.occurrence, 0U);
}

TEST(FaultText, IoctlsMayBeNumbers) {
  EXPECT_EQ(Parse("ioctl:0x8044B401=EIO").what, "GPIO_GET_CHIPINFO_IOCTL");
  EXPECT_EQ(Parse("ioctl:0x8044b401=EIO").what, "GPIO_GET_CHIPINFO_IOCTL");
  EXPECT_EQ(Parse("ioctl:0x10=EIO").what, RequestName(0x10));
}

TEST(FaultText, CallsOnRealFilesNameThemByTheirPath) {
  for (const char* call : {"flock", "tcgetattr", "tcsetattr", "fcntl", "read", "write"}) {
    EXPECT_EQ(Parse(call + std::string(":/dev/ttyS1=EIO")).what, "/dev/ttyS1");
    EXPECT_THROW(Parse(call + std::string(":/dev/gpiochip0=EIO")), UsageError);
  }
}

TEST(FaultText, BothNamesOfAnErrnoAreKnown) {
  EXPECT_EQ(Parse("open=EAGAIN").error, EAGAIN);
  EXPECT_EQ(Parse("open=EWOULDBLOCK").error, EAGAIN);
  EXPECT_EQ(Parse("open=EOPNOTSUPP").error, EOPNOTSUPP);
  EXPECT_EQ(Parse("open=ENOTSUP").error, EOPNOTSUPP);
}

class BadFaultText : public testing::TestWithParam<const char*> {};

TEST_P(BadFaultText, IsRefused) { EXPECT_THROW(Parse(GetParam()), UsageError); }

INSTANTIATE_TEST_SUITE_P(Texts, BadFaultText,
                         testing::Values("", "=", "open", "open=", "=EIO", "Open=EIO", "open=eio",
                                         "open=5", "open=EIO@", "open=EIO@-1", "open=EIO@1x",
                                         "open:=EIO", "open:line=EIO", "close:tty=EIO",
                                         "ioctl:=EIO", "ioctl:0x=EIO", "ioctl:0x1ffffffff=EIO",
                                         "ioctl:FOO=EIO", "open=0"));

TEST(FaultTable, EveryMatchingCallFailsWithoutAnOccurrence) {
  FaultTable table;
  table.Add(Parse("open=EIO"));
  EXPECT_EQ(table.Next("open", "/dev/gpiochip0"), EIO);
  EXPECT_EQ(table.Next("open", "/dev/other"), EIO);
  EXPECT_EQ(table.Next("close", "line"), 0);
}

TEST(FaultTable, OnlyTheNamedThingFails) {
  FaultTable table;
  table.Add(Parse("close:line=EIO"));
  EXPECT_EQ(table.Next("close", "/dev/gpiochip0"), 0);
  EXPECT_EQ(table.Next("close", "line"), EIO);
}

TEST(FaultTable, OccurrencesCountMatchingCallsOnly) {
  FaultTable table;
  table.Add(Parse("close:line=EIO@2"));
  EXPECT_EQ(table.Next("close", "line"), 0);
  EXPECT_EQ(table.Next("close", "/dev/gpiochip0"), 0);
  EXPECT_EQ(table.Next("close", "line"), EIO);
  EXPECT_EQ(table.Next("close", "line"), 0);
}

TEST(FaultTable, FirstFaultThatAppliesDecidesAndAllCount) {
  FaultTable table;
  table.Add(Parse("open=EIO@1"));
  table.Add(Parse("open=EACCES@2"));
  EXPECT_EQ(table.Next("open", ""), EIO);
  EXPECT_EQ(table.Next("open", ""), EACCES);
  EXPECT_EQ(table.Next("open", ""), 0);
}

}  // namespace
}  // namespace kestrel::board
