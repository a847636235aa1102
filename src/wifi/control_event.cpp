// SPDX-License-Identifier: Apache-2.0
#include "wifi/control_event.h"

#include <time.h>

namespace wifi {
namespace {

constexpr int kFailureLevel = 2;

int32_t MonotonicMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  // Unsigned, because it wraps after 24 days.
  return static_cast<int32_t>(static_cast<uint32_t>(now.tv_nsec / 1000000) +
                              1000U * static_cast<uint32_t>(now.tv_sec));
}

}  // namespace

eastl::shared_ptr<ControlEventSink> g_control_event_sink;

void ReportControlEvent(int code, int errnoValue) {
  // A reference of its own keeps the sink alive for the length of the call.
  const eastl::shared_ptr<ControlEventSink> sink = g_control_event_sink;
  if (!sink) {
    return;
  }
  const ControlEventArgument argument = {0, &errnoValue};
  sink->Record(kEventSourceId, kFailureLevel, MonotonicMilliseconds(), code, 0, &argument, 1);
}

}  // namespace wifi
