// SPDX-License-Identifier: Apache-2.0
#include "host/event_loop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <vector>

#include "host/timer.h"

namespace kestrel::board {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

TEST(EventLoop, MakesCallsInTheOrderOfTheirMoments) {
  EventLoop loop;
  std::vector<int> made;
  loop.CallAfter(milliseconds(30), [&] {
    made.push_back(3);
    loop.Stop();
  });
  loop.CallAfter(milliseconds(1), [&] { made.push_back(1); });
  loop.CallAfter(milliseconds(10), [&] { made.push_back(2); });
  loop.Run();
  EXPECT_THAT(made, ElementsAre(1, 2, 3));
}

TEST(EventLoop, NeverCallsTooEarly) {
  EventLoop loop;
  const auto start = std::chrono::steady_clock::now();
  loop.CallAfter(milliseconds(20), [&] { loop.Stop(); });
  loop.Run();
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(20));
}

TEST(EventLoop, CancelledCallsAreNotMade) {
  EventLoop loop;
  std::vector<int> made;
  uint64_t second = 0;
  loop.CallAfter(milliseconds(0), [&] { loop.Cancel(second); });
  second = loop.CallAfter(milliseconds(0), [&] { made.push_back(2); });
  loop.CallAfter(milliseconds(1), [&] { loop.Stop(); });
  loop.Run();
  EXPECT_TRUE(made.empty());
}

TEST(EventLoop, ServesDescriptorsWhileCallsWait) {
  EventLoop loop;
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  loop.CallAfter(milliseconds(600000), [] { FAIL() << "ten minutes have passed"; });
  loop.CallAfter(milliseconds(1), [&] { EXPECT_EQ(write(ends[1], "x", 1), 1); });
  loop.Watch(ends[0], [&] { loop.Stop(); });
  loop.Run();
  close(ends[0]);
  close(ends[1]);
}

TEST(Timer, CanBeStartedAnewAndStopped) {
  EventLoop loop;
  std::vector<int> made;
  Timer timer(loop);
  Timer stopped(loop);
  timer.Start(milliseconds(0), [&] { made.push_back(1); });
  timer.Start(milliseconds(5), [&] {
    made.push_back(2);
    EXPECT_FALSE(timer.running());
    timer.Start(milliseconds(0), [&] { loop.Stop(); });
  });
  stopped.Start(milliseconds(0), [&] { made.push_back(3); });
  stopped.Stop();
  EXPECT_TRUE(timer.running());
  EXPECT_FALSE(stopped.running());
  loop.Run();
  EXPECT_THAT(made, ElementsAre(2));
}

TEST(Timer, MayGoWhileItCalls) {
  EventLoop loop;
  auto timer = std::make_unique<Timer>(loop);
  bool called = false;
  timer->Start(milliseconds(0), [&] {
    timer.reset();
    called = true;
  });
  Timer gone(loop);
  {
    Timer inner(loop);
    inner.Start(milliseconds(0), [] { FAIL() << "its timer has gone"; });
  }
  loop.CallAfter(milliseconds(2), [&] { loop.Stop(); });
  loop.Run();
  EXPECT_TRUE(called);
}

}  // namespace
}  // namespace kestrel::board
