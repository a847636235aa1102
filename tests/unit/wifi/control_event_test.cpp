// SPDX-License-Identifier: Apache-2.0
#include "wifi/control_event.h"

#include <gtest/gtest.h>
#include <time.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "unit/vtable_slot.h"
#include "unit/wifi/control_client_fixture.h"

namespace kestrel::test {
namespace {

using testing::_;
using wifi::g_control_event_sink;

struct Event {
  unsigned source;
  int level;
  int32_t time;
  int code;
  int reserved;
  std::vector<std::pair<int, int>> arguments;

  bool operator==(const Event& other) const {
    return source == other.source && level == other.level && time == other.time &&
           code == other.code && reserved == other.reserved && arguments == other.arguments;
  }
};

void PrintTo(const Event& event, std::ostream* stream) {
  *stream << "source " << event.source << ", level " << event.level << ", time " << event.time
          << ", code " << event.code << ", reserved " << event.reserved << ", arguments "
          << testing::PrintToString(event.arguments);
}

class EventList : public wifi::ControlEventSink {
 public:
  explicit EventList(std::vector<Event>& events) : events_(events) {}

  void Record(uint16_t source, int level, int32_t time, int code, int reserved,
              const wifi::ControlEventArgument* arguments, int count) override {
    // From here on the library's reference alone keeps the sink.
    g_control_event_sink = {};
    Event event{source, level, time, code, reserved, {}};
    for (int i = 0; i < count; ++i) {
      event.arguments.emplace_back(arguments[i].kind, *arguments[i].value);
    }
    events_.push_back(event);
  }

 private:
  std::vector<Event>& events_;
};

class ControlEvents : public ControlClientTest {
 protected:
  ControlEvents() { g_control_event_sink = eastl::make_shared<EventList>(events_); }
  ~ControlEvents() override { g_control_event_sink = {}; }

  void ExpectTime(time_t seconds, long nanoseconds) {
    EXPECT_CALL(system_, ClockGettime(CLOCK_MONOTONIC, _)).WillOnce([=](clockid_t, timespec* time) {
      *time = {seconds, nanoseconds};
      return 0;
    });
  }

  std::vector<Event> events_;
};

TEST_F(ControlEvents, TellOfASocketThatCannotBeMade) {
  ExpectSocketFailure(EMFILE);
  ExpectTime(2, 345999999);
  RunOn(system_, [] { return wifi::WifiControlClient({}), 0; });
  EXPECT_EQ(events_, (std::vector<Event>{{15, 2, 2345, 1, 0, {{0, EMFILE}}}}));
}

TEST_F(ControlEvents, TellOfAFailedWriteBeforeTheConnectionIsClosed) {
  wifi::WifiControlClient client = ConnectedClient();
  ExpectWriteFailure(ECONNRESET);
  ExpectTime(7, 0);
  ExpectClose();
  Request(client);
  EXPECT_EQ(events_, (std::vector<Event>{{15, 2, 7000, 5, 0, {{0, ECONNRESET}}}}));
}

TEST_F(ControlEvents, TellOfAFailedReadBeforeTheConnectionIsClosed) {
  wifi::WifiControlClient client = ConnectedClient();
  ExpectWrite(std::string("STATUS\0", 7));
  ExpectTimeout();
  ExpectReadFailure(EAGAIN);
  ExpectTime(0, 999999);
  ExpectClose();
  Request(client);
  EXPECT_EQ(events_, (std::vector<Event>{{15, 2, 0, 6, 0, {{0, EAGAIN}}}}));
}

TEST_F(ControlEvents, AreNotSentForAConnectionThatCannotBeMade) {
  ExpectSocket();
  ExpectConnectionFailure(ENOENT);
  ExpectClose();
  RunOn(system_, [] { return wifi::WifiControlClient({}), 0; });
  EXPECT_TRUE(events_.empty());
}

TEST_F(ControlEvents, AreNotSentForARefusalOrAMissingConnection) {
  wifi::WifiControlClient client = ConnectedClient();
  ExpectExchange("STATUS", "FAIL\n");
  Request(client);
  client.ipc->fd = -1;
  Request(client);
  EXPECT_TRUE(events_.empty());
}

TEST_F(ControlEvents, DoNotEvenTakeTheTimeWithoutASink) {
  g_control_event_sink = {};
  EXPECT_THAT(ObserveOn(system_, [] { return wifi::ReportControlEvent(5, EPIPE), 0; }), Returns(0));
}

TEST_F(ControlEvents, HaveATimeThatWraps) {
  ExpectTime(2147483, 647000000);
  RunOn(system_, [] { return wifi::ReportControlEvent(5, 1), 0; });
  g_control_event_sink = eastl::make_shared<EventList>(events_);
  ExpectTime(2147483, 648000000);
  RunOn(system_, [] { return wifi::ReportControlEvent(5, 1), 0; });
  ASSERT_EQ(events_.size(), 2u);
  EXPECT_EQ(events_[0].time, INT_MAX);
  EXPECT_EQ(events_[1].time, INT_MIN);
}

TEST(ControlEventSink, RecordsWithItsFourthOperation) {
  EXPECT_EQ(VtableSlot(&wifi::ControlEventSink::Record), 3);
}

TEST(ControlEventSink, KnowsTheFamilyByNumber15) {
  static_assert(std::is_same_v<decltype(wifi::kEventSourceId), const uint16_t>);
  EXPECT_EQ(wifi::kEventSourceId, 15);
}

TEST(ControlEventSink, IsNotThereAtFirst) { EXPECT_FALSE(g_control_event_sink); }

class LastWords : public wifi::ControlEventSink {
 public:
  LastWords() = default;
  ~LastWords() override { fputs("released\n", stderr); }
  LastWords(const LastWords&) = delete;
  LastWords& operator=(const LastWords&) = delete;
  void Record(uint16_t, int, int32_t, int, int, const wifi::ControlEventArgument*, int) override {}
};

TEST(ControlEventSinkDeathTest, IsReleasedAtExit) {
  const auto install_and_exit = [] {
    g_control_event_sink = eastl::make_shared<LastWords>();
    exit(3);
  };
  EXPECT_EXIT(install_and_exit(), testing::ExitedWithCode(3), "^released\n$");
}

}  // namespace
}  // namespace kestrel::test
