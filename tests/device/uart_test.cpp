// SPDX-License-Identifier: Apache-2.0
// Serial ports: two that a null-modem cable joins, and one without hardware behind it.
#include <errno.h>
#include <fcntl.h>
#include <kestrel/log.h>
#include <kestrel/uart.h>
#include <poll.h>
#include <sys/file.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <future>
#include <thread>

#include "board/serial_port.h"
#include "rig.h"
#include "support/in_child.h"
#include "support/outcome.h"
#include "support/threads.h"
#include "visitor.h"

namespace kestrel::test {
namespace {

using testing::ElementsAre;

constexpr size_t kMebibyte = size_t{1024} * 1024;
constexpr uint32_t kMissingPort = 255;
constexpr char kLocked[] =
    "[Kestrel:UART] Unable to open device exclusively: Resource temporarily unavailable (11).\n";

termios SettingsOf(uint32_t number) {
  const Visitor visitor(number);
  termios settings{};
  EXPECT_EQ(tcgetattr(visitor.get(), &settings), 0);
  return settings;
}

/// Both ends of the cable, opened with the same settings.
class Cable {
 public:
  explicit Cable(const UartConfigRecord& config)
      : left(z__UART_Open(kLeftPort, &config)), right(z__UART_Open(kRightPort, &config)) {}
  ~Cable() {
    close(left);
    close(right);
  }
  Cable(const Cable&) = delete;
  Cable& operator=(const Cable&) = delete;

  const int left;
  const int right;
};

std::string EveryByte() {
  std::string bytes;
  for (int value = 0; value < 256; ++value) {
    bytes.push_back(static_cast<char>(value));
  }
  return bytes;
}

/// So many bytes, every value next to every other. With `start`, two calls give different ones. The
/// characters of XON/XOFF are left out where they would not arrive.
std::string Noise(size_t size, uint32_t start, bool without_flow_characters) {
  std::string bytes;
  bytes.reserve(size);
  uint32_t state = start;
  while (bytes.size() < size) {
    state = state * 1664525 + 1013904223;
    const auto byte = static_cast<char>(state >> 24);
    if (!without_flow_characters || (byte != 0x11 && byte != 0x13)) {
      bytes.push_back(byte);
    }
  }
  return bytes;
}

/// Reads `size` bytes; fewer when none come for ten seconds. Lets bytes gather when few have come:
/// an emulated processor takes long for each read.
std::string ReadInBulk(int port, size_t size) {
  constexpr std::chrono::milliseconds kGather{4};
  std::string text;
  while (text.size() < size) {
    const std::string more = ReadFrom(port, 1);
    if (more.empty()) {
      break;
    }
    text += more;
    std::this_thread::sleep_for(kGather);
    std::array<char, 8192> buffer;
    const ssize_t count = read(port, buffer.data(), std::min(buffer.size(), size - text.size()));
    text.append(buffer.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
  }
  return text;
}

/// Whether all of `sent` arrives at `to` when it is written to `from`.
bool Arrives(int from, int to, const std::string& sent) {
  std::future<bool> written = std::async(std::launch::async, WriteTo, from, std::cref(sent));
  const bool arrived = ReadInBulk(to, sent.size()) == sent;
  return written.get() && arrived;
}

TEST(DeviceUart, PortIsOneDescriptorThatDoesNotBlock) {
  const Observed open = Observe([] { return OpenPort(kLeftPort); });
  EXPECT_GE(open.result, 0);
  EXPECT_EQ(open.standard_error, "");
  EXPECT_THAT(open.new_descriptors, ElementsAre(open.result));
  EXPECT_EQ(fcntl(open.result, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR | O_NONBLOCK);
  char byte = 0;
  EXPECT_EQ(read(open.result, &byte, 1), 0) << "nothing has come";
  EXPECT_EQ(close(open.result), 0);
}

TEST(DeviceUart, PortIsRaw) {
  const int port = OpenPort(kLeftPort);
  const termios settings = SettingsOf(kLeftPort);
  EXPECT_EQ(settings.c_iflag & 0x5FFFU, tcflag_t{IGNBRK | IGNPAR});
  EXPECT_EQ(settings.c_oflag & 0xF7U, 0U);
  EXPECT_EQ(settings.c_cflag & (CSIZE | CSTOPB | PARENB | CREAD | HUPCL | CLOCAL),
            tcflag_t{CS8 | CREAD | HUPCL | CLOCAL});
  EXPECT_EQ(settings.c_lflag & 0xC7FFU, 0U);
  EXPECT_EQ(settings.c_cc[VMIN], 0);
  EXPECT_EQ(settings.c_cc[VTIME], 0);
  close(port);
}

struct Speed {
  uint32_t baud_rate;
  speed_t code;
};

class DeviceUartSpeed : public testing::TestWithParam<Speed> {};

INSTANTIATE_TEST_SUITE_P(Each, DeviceUartSpeed,
                         testing::Values(Speed{9600, B9600}, Speed{19200, B19200},
                                         Speed{38400, B38400}, Speed{57600, B57600},
                                         Speed{115200, B115200}, Speed{230400, B230400},
                                         Speed{460800, B460800}, Speed{500000, B500000},
                                         Speed{576000, B576000}, Speed{921600, B921600},
                                         Speed{1000000, B1000000}, Speed{1152000, B1152000},
                                         Speed{1500000, B1500000}, Speed{2000000, B2000000}),
                         [](const auto& test) { return std::to_string(test.param.baud_rate); });

TEST_P(DeviceUartSpeed, IsSetAndCarriesEveryByteBothWays) {
  UartConfigRecord config = PortConfig();
  config.baudRate = GetParam().baud_rate;
  const Cable cable(config);
  ASSERT_GE(cable.left, 0);
  ASSERT_GE(cable.right, 0);
  for (const uint32_t number : {kLeftPort, kRightPort}) {
    const termios settings = SettingsOf(number);
    EXPECT_EQ(cfgetospeed(&settings), GetParam().code) << number;
    EXPECT_EQ(cfgetispeed(&settings), GetParam().code) << number;
  }
  EXPECT_TRUE(Arrives(cable.left, cable.right, EveryByte()));
  EXPECT_TRUE(Arrives(cable.right, cable.left, EveryByte()));
}

TEST(DeviceUart, SpeedThatTheHardwareLacksIsGivenUp) {
  TheRig().SlowDownPort(kLeftPort);
  UartConfigRecord config = PortConfig();
  config.baudRate = 230400;
  EXPECT_THAT(Observe([&] { return z__UART_Open(kLeftPort, &config); }),
              Fails(kUntouched, "[Kestrel:UART] Could not set the attributes of the device.\n"));
  TheRig().SpeedUpPort(kLeftPort);
  const int port = z__UART_Open(kLeftPort, &config);
  EXPECT_GE(port, 0);
  close(port);
}

struct FlowControl {
  std::string name;
  UartFlowControl asked;
  tcflag_t input;
  tcflag_t control;
  cc_t start;
  cc_t stop;
};

void PrintTo(const FlowControl& flow_control, std::ostream* stream) {
  *stream << flow_control.name;
}

class DeviceUartFlowControl : public testing::TestWithParam<FlowControl> {};

INSTANTIATE_TEST_SUITE_P(
    Each, DeviceUartFlowControl,
    testing::Values(FlowControl{"None", UartFlowControl_None, 0, 0, 0, 0},
                    FlowControl{"RtsCts", UartFlowControl_RtsCts, 0, CRTSCTS, 0, 0},
                    FlowControl{"XonXoff", UartFlowControl_XonXoff, IXON | IXOFF, 0, 0x11, 0x13}),
    [](const auto& test) { return test.param.name; });

TEST_P(DeviceUartFlowControl, IsSet) {
  const UartConfigRecord config = PortConfig(GetParam().asked);
  const Cable cable(config);
  for (const uint32_t number : {kLeftPort, kRightPort}) {
    const termios settings = SettingsOf(number);
    EXPECT_EQ(settings.c_iflag & (IXON | IXOFF), GetParam().input);
    EXPECT_EQ(settings.c_cflag & CRTSCTS, GetParam().control);
    EXPECT_EQ(settings.c_cc[VSTART], GetParam().start);
    EXPECT_EQ(settings.c_cc[VSTOP], GetParam().stop);
  }
}

TEST_P(DeviceUartFlowControl, CarriesAllThatIsSentBothWaysAtTheSameTime) {
  const Cable cable(PortConfig(GetParam().asked));
  const bool in_band = GetParam().asked == UartFlowControl_XonXoff;
  const std::string to_right = Noise(32768, 1, in_band);
  const std::string to_left = Noise(32768, 2, in_band);
  std::future<bool> rightward =
      std::async(std::launch::async, Arrives, cable.left, cable.right, std::cref(to_right));
  EXPECT_TRUE(Arrives(cable.right, cable.left, to_left));
  EXPECT_TRUE(rightward.get());
}

// One test for each way: an emulated machine that has to share its host takes a minute for one.

TEST(DeviceUart, CarriesAMebibyteToTheRightWithoutLoss) {
  const Cable cable(PortConfig(UartFlowControl_None));
  EXPECT_TRUE(Arrives(cable.left, cable.right, Noise(kMebibyte, 3, false)));
}

TEST(DeviceUart, CarriesAMebibyteToTheLeftWithoutLoss) {
  const Cable cable(PortConfig(UartFlowControl_None));
  EXPECT_TRUE(Arrives(cable.right, cable.left, Noise(kMebibyte, 4, false)));
}

TEST(DeviceUart, XoffStopsASenderUntilXon) {
  constexpr int kWhileMilliseconds = 200;
  const UartConfigRecord obeying = PortConfig(UartFlowControl_XonXoff);
  const UartConfigRecord plain = PortConfig(UartFlowControl_None);
  const int sender = z__UART_Open(kLeftPort, &obeying);
  const int receiver = z__UART_Open(kRightPort, &plain);
  // When the letter behind it has come, the sender has seen the XOFF.
  EXPECT_TRUE(WriteTo(receiver, "a\x13z"));
  EXPECT_EQ(ReadFrom(sender, 2), "az");
  pollfd writable = {sender, POLLOUT, 0};
  EXPECT_EQ(poll(&writable, 1, 0), TheRig().Of(kStoppedPortTakesBytes) ? 1 : 0);
  std::future<bool> sent = std::async(std::launch::async, WriteTo, sender, "stopped");
  pollfd readable = {receiver, POLLIN, 0};
  EXPECT_EQ(poll(&readable, 1, kWhileMilliseconds), 0);
  EXPECT_TRUE(WriteTo(receiver, "\x11"));
  EXPECT_EQ(ReadFrom(receiver, 7), "stopped");
  EXPECT_TRUE(sent.get());
  close(sender);
  close(receiver);
}

TEST(DeviceUart, SettingsOfTheOpenBeforeAreGone) {
  UartConfigRecord before = PortConfig(UartFlowControl_XonXoff);
  before.baudRate = 9600;
  EXPECT_EQ(close(z__UART_Open(kLeftPort, &before)), 0);
  const int port = OpenPort(kLeftPort);
  const termios settings = SettingsOf(kLeftPort);
  EXPECT_EQ(settings.c_iflag & (IXON | IXOFF), 0U);
  EXPECT_EQ(cfgetospeed(&settings), speed_t{B115200});
  close(port);
}

TEST(DeviceUart, SettingsLastWhileThePortIsClosed) {
  UartConfigRecord config = PortConfig(UartFlowControl_RtsCts);
  config.baudRate = 19200;
  EXPECT_EQ(close(z__UART_Open(kLeftPort, &config)), 0);
  const termios settings = SettingsOf(kLeftPort);
  EXPECT_EQ(settings.c_cflag & CRTSCTS, tcflag_t{CRTSCTS});
  EXPECT_EQ(cfgetospeed(&settings), speed_t{B19200});
}

TEST(DeviceUart, FramingOtherThanEightNoneOneIsRefusedBeforeThePortIsTouched) {
  const std::array<UartConfigRecord, 4> configs = [] {
    std::array<UartConfigRecord, 4> all{};
    all.fill(PortConfig());
    all[0].dataBits = 7;
    all[1].parity = 1;
    all[2].stopBits = 2;
    all[3].blockingMode = 1;
    return all;
  }();
  const int holder = OpenPort(kLeftPort);
  for (const UartConfigRecord& config : configs) {
    EXPECT_THAT(Observe([&] { return z__UART_Open(kLeftPort, &config); }), IsRefused(EINVAL));
  }
  close(holder);
}

TEST(DeviceUart, OpenPortIsLockedForThisProcessAndOthersUntilItIsClosed) {
  const int port = OpenPort(kLeftPort);
  EXPECT_THAT(Observe([] { return OpenPort(kLeftPort); }), Fails(EWOULDBLOCK, kLocked));
  EXPECT_EQ(InChild([] {
              EXPECT_THAT(Observe([] { return OpenPort(kLeftPort); }), Fails(EWOULDBLOCK, kLocked));
              return testing::Test::HasFailure() ? 1 : 0;
            }),
            0);
  close(port);
  EXPECT_EQ(InChild([] { return OpenPort(kLeftPort) >= 0 ? 0 : 1; }), 0);
  EXPECT_EQ(close(OpenPort(kLeftPort)), 0) << "the lock has ended with its process";
}

TEST(DeviceUart, LockOfAnotherProgramIsRespected) {
  const Visitor visitor(kLeftPort);
  ASSERT_EQ(flock(visitor.get(), LOCK_EX | LOCK_NB), 0);
  EXPECT_THAT(Observe([] { return OpenPort(kLeftPort); }), Fails(EWOULDBLOCK, kLocked));
  ASSERT_EQ(flock(visitor.get(), LOCK_UN), 0);
  EXPECT_EQ(close(OpenPort(kLeftPort)), 0);
}

TEST(DeviceUart, RefusedOpenLeavesThePortToItsHolder) {
  const UartConfigRecord config = PortConfig(UartFlowControl_RtsCts);
  const Cable cable(config);
  EXPECT_THAT(Observe([] { return OpenPort(kLeftPort); }), Fails(EWOULDBLOCK, kLocked));
  EXPECT_EQ(SettingsOf(kLeftPort).c_cflag & CRTSCTS, tcflag_t{CRTSCTS});
  EXPECT_TRUE(Arrives(cable.left, cable.right, "still here"));
}

TEST(DeviceUart, OfEightThreadsOneGetsThePort) {
  std::array<int, 8> ports{};
  const Observed all = Observe([&] {
    OnThreads(8, [&](size_t thread) { ports.at(thread) = OpenPort(kLeftPort); });
    return 0;
  });
  EXPECT_EQ(std::count(ports.begin(), ports.end(), -1), 7);
  EXPECT_THAT(all.new_descriptors, ElementsAre(*std::max_element(ports.begin(), ports.end())));
  std::string seven;
  for (int i = 0; i < 7; ++i) {
    seven += kLocked;
  }
  EXPECT_EQ(all.standard_error, seven);
  close(*all.new_descriptors.begin());
}

TEST(DeviceUart, PortWithoutHardwareIsAnInputOutputError) {
  EXPECT_THAT(
      Observe([] { return OpenPort(kHollowPort); }),
      Fails(EIO, "[Kestrel:UART] Unable to get attributes of device: Input/output error (5).\n"));
}

TEST(DeviceUart, PortWithoutHardwareCarriesNothing) {
  const Visitor visitor(kHollowPort);
  ASSERT_GE(visitor.get(), 0) << "it can be opened";
  char byte = 'x';
  EXPECT_EQ(write(visitor.get(), &byte, 1), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(read(visitor.get(), &byte, 1), -1);
  EXPECT_EQ(errno, EIO);
}

TEST(DeviceUart, PortThatDoesNotExistCannotBeOpened) {
  EXPECT_THAT(
      Observe([] { return OpenPort(kMissingPort); }),
      Fails(ENOENT, "[Kestrel:UART] Unable to open device: No such file or directory (2).\n"));
}

TEST(DeviceUart, NumberAboveTheHighestIsRefusedInSilence) {
  EXPECT_THAT(Observe([] { return OpenPort(256); }), IsRefused(ENODEV));
}

TEST(DeviceUart, UserWhoMayNotOpenThePortIsTold) {
  const auto open_port = [] {
    EXPECT_THAT(Observe([] { return OpenPort(kLeftPort); }),
                Fails(EACCES, "[Kestrel:UART] Unable to open device: Permission denied (13).\n"));
    return testing::Test::HasFailure() ? 1 : 0;
  };
  EXPECT_EQ(TheRig().AsUserWhoMayNotOpen(PortPath(kLeftPort), open_port), 0);
  EXPECT_EQ(close(OpenPort(kLeftPort)), 0);
}

}  // namespace
}  // namespace kestrel::test
