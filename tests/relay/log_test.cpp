// SPDX-License-Identifier: Apache-2.0
#include "log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "limited_log.h"

namespace kestrel::relay {
namespace {

using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

constexpr char kName[] = "kestrel-wifi-relay: ";

size_t CountLines(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST(RelayLog, EveryControlCharacterBecomesABlank) {
  CaptureStderr();
  Log(false).Error("one\ntwo\n\nthree\rfour\tfive\x1b[31m\x7f sch\xc3\xb6n\n");
  EXPECT_EQ(GetCapturedStderr(),
            std::string(kName) + "one two  three four five [31m  sch\xc3\xb6n \n");
}

class LimitedLogTest : public testing::Test {
 protected:
  LimitedLogTest() { CaptureStderr(); }

  static void Warn(LimitedLog& log, Topic topic, size_t times) {
    for (size_t count = 0; count < times; ++count) {
      log.Warning(topic, "again");
    }
  }

  board::EventLoop loop_;
  const Log quiet_{false};
  const Log verbose_{true};
};

TEST_F(LimitedLogTest, WritesSomeAndCountsTheRest) {
  {
    LimitedLog log(loop_, quiet_);
    Warn(log, Topic::kRefusals, LimitedLog::kMostWarnings + 1234);
  }
  const std::string text = GetCapturedStderr();
  EXPECT_EQ(CountLines(text, "again\n"), LimitedLog::kMostWarnings);
  EXPECT_THAT(
      text, HasSubstr(std::string(kName) + "refused commands: 1234 more of these were left out\n"));
}

TEST_F(LimitedLogTest, WritesNoMoreNotesThanWarnings) {
  {
    LimitedLog log(loop_, quiet_);
    for (size_t count = 0; count < LimitedLog::kMostWarnings; ++count) {
      log.Info(Topic::kSupplicant, "again");
    }
    log.Info(Topic::kSupplicant, "one more");
  }
  const std::string text = GetCapturedStderr();
  EXPECT_EQ(CountLines(text, "again\n"), LimitedLog::kMostWarnings);
  EXPECT_EQ(CountLines(text, "one more"), 0U);
}

TEST_F(LimitedLogTest, SaysNothingOfNothing) {
  {
    LimitedLog log(loop_, quiet_);
    Warn(log, Topic::kRefusals, LimitedLog::kMostWarnings);
  }
  EXPECT_EQ(CountLines(GetCapturedStderr(), "\n"), LimitedLog::kMostWarnings);
}

TEST_F(LimitedLogTest, KeepsTopicsApart) {
  {
    LimitedLog log(loop_, quiet_);
    Warn(log, Topic::kRefusals, 100);
    log.Info(Topic::kSupplicant, "answers");
  }
  EXPECT_EQ(CountLines(GetCapturedStderr(), "answers\n"), 1U);
}

TEST_F(LimitedLogTest, NamesEachTopic) {
  constexpr std::pair<Topic, const char*> kTopics[] = {
      {Topic::kConnections, "programs that come and go"},
      {Topic::kCommands, "commands"},
      {Topic::kFailures, "commands that failed"},
      {Topic::kRefusals, "refused commands"},
      {Topic::kUnreadReplies, "programs that do not read their replies"},
      {Topic::kPlaces, "programs that find no room"},
      {Topic::kSupplicant, "a supplicant that comes and goes"}};
  std::string expected;
  {
    LimitedLog log(loop_, quiet_);
    for (const auto& [topic, name] : kTopics) {
      Warn(log, topic, LimitedLog::kMostWarnings + 1);
      expected += kName + std::string(name) + ": 1 more of these were left out\n";
    }
  }
  EXPECT_THAT(GetCapturedStderr(), testing::EndsWith(expected));
}

TEST_F(LimitedLogTest, BeginsAnewAfterEachIntervalAndTellsWhatWasLeftOut) {
  LimitedLog log(loop_, quiet_, std::chrono::milliseconds(10));
  Warn(log, Topic::kRefusals, LimitedLog::kMostWarnings + 7);
  loop_.CallAfter(std::chrono::milliseconds(50), [this] { loop_.Stop(); });
  loop_.Run();
  Warn(log, Topic::kRefusals, LimitedLog::kMostWarnings);
  const std::string text = GetCapturedStderr();
  EXPECT_EQ(CountLines(text, "again\n"), 2 * LimitedLog::kMostWarnings);
  EXPECT_EQ(CountLines(text, ": 7 more of these were left out\n"), 1U);
  EXPECT_EQ(CountLines(text, "left out"), 1U);
}

TEST_F(LimitedLogTest, LeavesDebugLinesOutLater) {
  {
    LimitedLog log(loop_, verbose_);
    for (size_t count = 0; count < LimitedLog::kMostDebugLines + 3; ++count) {
      log.Debug(Topic::kCommands, "again");
    }
  }
  const std::string text = GetCapturedStderr();
  EXPECT_EQ(CountLines(text, "again\n"), LimitedLog::kMostDebugLines);
  EXPECT_THAT(text, HasSubstr("commands: 3 more of these were left out\n"));
}

TEST_F(LimitedLogTest, DoesNotCountLinesThatNobodyAskedFor) {
  {
    LimitedLog log(loop_, quiet_);
    for (size_t count = 0; count < 2 * LimitedLog::kMostDebugLines; ++count) {
      log.Debug(Topic::kCommands, "again");
    }
  }
  EXPECT_EQ(GetCapturedStderr(), "");
}

}  // namespace
}  // namespace kestrel::relay
