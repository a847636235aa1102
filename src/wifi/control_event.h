// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_CONTROL_EVENT_H
#define KESTREL_WIFI_CONTROL_EVENT_H

#include <EASTL/shared_ptr.h>
#include <stdint.h>

namespace wifi {

struct ControlEventArgument {
  int kind;  ///< 0: an int
  const int* value;
};

/// Receives failures of the control socket. The library installs none.
class ControlEventSink {
 public:
  virtual ~ControlEventSink() = default;

  /// Not called. It keeps Record() in its place among the virtual operations.
  virtual void Reserved() {}

  /// `time` is that of the monotonic clock in milliseconds, and wraps. `reserved` is 0.
  virtual void Record(uint16_t source_id, int level, int32_t time, int code, int reserved,
                      const ControlEventArgument* arguments, int argument_count) = 0;
};

/// The process's sink, or empty. Replace it only while no other thread is in a Wi-Fi call.
extern eastl::shared_ptr<ControlEventSink> g_control_event_sink;

/// What sinks know the Wi-Fi family by. It has this value before any code of the library runs.
inline constexpr uint16_t kEventSourceId = 15;

inline constexpr int kSocketFailed = 1;
inline constexpr int kWriteFailed = 5;
inline constexpr int kReadFailed = 6;

/// Forwards a failure to the sink, if there is one.
void ReportControlEvent(int code, int errnoValue);

}  // namespace wifi

#endif  // KESTREL_WIFI_CONTROL_EVENT_H
