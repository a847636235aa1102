// SPDX-License-Identifier: Apache-2.0
// What the board answers to messages that no program of ours sends.
#include "server/server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/gpio.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <nlohmann/json.hpp>

#include "failing_call.h"
#include "protocol/descriptor_message.h"
#include "protocol/exchange.h"
#include "protocol/text_file.h"
#include "served_board.h"
#include "support/temporary_directory.h"

namespace kestrel::test {
namespace {

using board::UniqueFd;
using board::wire::DescriptorMessage;
using board::wire::MakeTextFile;
using board::wire::Operation;
using board::wire::Outcome;
using board::wire::ReadTextFile;
using nlohmann::json;

constexpr char kWarden[] = "/dev/warden";
constexpr uint32_t kGetDeviceState = 0xC0847001;

class ServerTest : public testing::Test {
 protected:
  /// A connection over which a device has been opened.
  UniqueFd Open(const std::string& path) {
    UniqueFd connection = board_.Connect();
    const auto reply = board_.Ask(connection, Operation::kOpen, O_RDWR, path);
    EXPECT_TRUE(reply.has_value() && reply->header.outcome == Outcome::kDone) << path;
    return connection;
  }

  /// The reply to an ioctl whose argument has `size` bytes.
  std::optional<BoardReply> Ioctl(const UniqueFd& device, uint32_t request, size_t size) {
    return board_.Ask(device, Operation::kIoctl, request, std::string(size, '\0'));
  }

  std::string ErrorOf(const std::optional<BoardReply>& reply) {
    return reply.has_value() ? json::parse(reply->payload).value("error", "") : "(no reply)";
  }

  const TemporaryDirectory folder_;
  ServedBoard board_{folder_.path()};
};

TEST_F(ServerTest, IoctlWithoutAllOfItsArgumentIsNotAnswered) {
  const UniqueFd chip = Open("/dev/gpiochip0");
  for (const unsigned long number : {GPIO_GET_LINEINFO_IOCTL, GPIO_GET_LINEHANDLE_IOCTL}) {
    const auto request = static_cast<uint32_t>(number);
    EXPECT_FALSE(Ioctl(chip, request, 0).has_value());
    EXPECT_FALSE(Ioctl(chip, request, _IOC_SIZE(request) - 1).has_value());
    EXPECT_FALSE(Ioctl(chip, request, _IOC_SIZE(request) + 1).has_value());
    EXPECT_TRUE(Ioctl(chip, request, _IOC_SIZE(request)).has_value());
  }
}

TEST_F(ServerTest, LineHandlesWantAllOfTheirArgument) {
  const UniqueFd chip = Open("/dev/gpiochip0");
  gpiohandle_request request{};
  request.lines = 1;
  request.flags = GPIOHANDLE_REQUEST_OUTPUT;
  const auto made =
      board_.Ask(chip, Operation::kIoctl, GPIO_GET_LINEHANDLE_IOCTL,
                 std::string(reinterpret_cast<const char*>(&request), sizeof request));
  ASSERT_TRUE(made.has_value() && made->descriptor.valid());
  const uint32_t set = GPIOHANDLE_SET_LINE_VALUES_IOCTL;
  EXPECT_FALSE(Ioctl(made->descriptor, set, 0).has_value());
  EXPECT_TRUE(Ioctl(made->descriptor, set, _IOC_SIZE(set)).has_value());
}

TEST_F(ServerTest, SecurityDeviceWantsAllOfItsArgument) {
  const UniqueFd warden = Open(kWarden);
  EXPECT_FALSE(Ioctl(warden, kGetDeviceState, 0).has_value());
  const auto state = Ioctl(warden, kGetDeviceState, _IOC_SIZE(kGetDeviceState));
  ASSERT_TRUE(state.has_value());
  EXPECT_EQ(state->header.outcome, Outcome::kDone);
  EXPECT_EQ(state->payload.size(), _IOC_SIZE(kGetDeviceState));
}

TEST_F(ServerTest, MessagesThatAreNoneAreNotAnswered) {
  const UniqueFd connection = board_.Connect();
  EXPECT_FALSE(board_.Exchange(connection, "x").has_value());
  EXPECT_FALSE(board_.Exchange(connection, std::string(100, '\0')).has_value());
  EXPECT_FALSE(board_.Ask(connection, Operation::kFileCall, 0, "").has_value());
  EXPECT_FALSE(board_.Ask(connection, Operation::kFileCall, 0, "read").has_value());
  EXPECT_TRUE(board_.Ask(connection, Operation::kFileCall, 0, "read /file").has_value());
}

TEST_F(ServerTest, UnknownOperationIsRefused) {
  const auto reply = board_.Ask(board_.Connect(), static_cast<Operation>(77), 0, "");
  ASSERT_TRUE(reply.has_value());
  EXPECT_EQ(reply->header.error, ENOSYS);
}

TEST_F(ServerTest, RequestsThatTheCommandLineNeverMakesAreRefused) {
  const UniqueFd connection = board_.Connect();
  const std::string access_point =
      R"({"device": "wifi", "add": {"name": "n", "bssid": "", "hidden": false, "passphrase": "",)";
  const std::string rule = R"({"device": "wifi", "script": [{"command": "2A", "reply": "41",)";
  for (const std::string& request :
       {std::string("nonsense"), std::string("[]"), std::string(R"({"device": "none"})"),
        std::string(R"({"device": "gpio", "line": 1e300})"),
        std::string(R"({"device": "gpio", "line": -1})"),
        std::string(R"({"device": "uart", "port": 18446744073709551615})"),
        access_point + R"("security": "none", "channel": 1, "signal": -50}})",
        access_point + R"("security": "wpa2", "channel": 1, "signal": -129}})",
        access_point + R"("security": "wpa2", "channel": "1", "signal": -50}})",
        rule + R"("action": 5, "repeat": 1, "delay": 0, "count": 0}]})",
        rule + R"("action": 1, "repeat": 65537, "delay": 0, "count": 0}]})",
        rule + R"("action": 1, "repeat": 1, "delay": 600001, "count": 0}]})"}) {
    EXPECT_NE(ErrorOf(board_.Ask(connection, Operation::kControl, 0, request)), "") << request;
  }
  EXPECT_EQ(ErrorOf(board_.Ask(connection, Operation::kControl, 0, R"({"show": true})")), "");
}

TEST_F(ServerTest, FaultsThatAreRefusedChangeNone) {
  const UniqueFd connection = board_.Connect();
  board_.Ask(connection, Operation::kControl, 0, R"({"fault": {"add": ["open=EIO"]}})");
  EXPECT_NE(ErrorOf(board_.Ask(connection, Operation::kControl, 0,
                               R"({"fault": {"clear": true, "add": ["ioctl=EIO", 5]}})")),
            "");
  const auto reply = board_.Ask(connection, Operation::kControl, 0, R"({"fault": {}})");
  ASSERT_TRUE(reply.has_value());
  const json faults = json::parse(reply->payload).at("answer").at("faults");
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults.at(0).at("fault"), "open=EIO");
}

TEST_F(ServerTest, LongRequestComesAsAFile) {
  const UniqueFd connection = board_.Connect();
  const std::string blanks(100000, ' ');
  const UniqueFd file = MakeTextFile(blanks + R"({"device": "gpio", "line": 4})");
  EXPECT_FALSE(board_.Ask(connection, Operation::kText, 0, "", file.get()).has_value());
  const auto reply = board_.Ask(connection, Operation::kControl, 0, "");
  ASSERT_TRUE(reply.has_value());
  EXPECT_EQ(json::parse(reply->payload).at("answer").at("level"), "low");
  EXPECT_NE(ErrorOf(board_.Ask(connection, Operation::kControl, 0, "")), "")
      << "a file is for one request";
}

TEST_F(ServerTest, RequestInWhatIsNoFileIsRefused) {
  const UniqueFd connection = board_.Connect();
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const UniqueFd in(ends[0]);
  const UniqueFd out(ends[1]);
  board_.Ask(connection, Operation::kText, 0, "", in.get());
  EXPECT_EQ(ErrorOf(board_.Ask(connection, Operation::kControl, 0, "")),
            "the board cannot read the request: Invalid argument");
}

TEST_F(ServerTest, AnswerThatCannotBeSentIsExplained) {
  const UniqueFd connection = board_.Connect();
  json faults = json::array();
  for (int i = 0; i < 500; ++i) {
    faults.push_back("ioctl:0x8044B401=EIO");
  }
  const FailingCall failing("memfd_create", ENOMEM);
  const auto reply =
      board_.Ask(connection, Operation::kControl, 0, json({{"fault", {{"add", faults}}}}).dump());
  EXPECT_TRUE(FailingCall::HasFailed());
  EXPECT_EQ(ErrorOf(reply).rfind("the board cannot send its answer of ", 0), 0U) << ErrorOf(reply);
  EXPECT_NE(ErrorOf(reply).find(" bytes: Cannot allocate memory"), std::string::npos);
}

TEST(TextFile, CarriesAnyText) {
  const std::string text = std::string(300000, 'x') + '\0' + "end";
  std::string read;
  const UniqueFd file = MakeTextFile(text);
  ASSERT_TRUE(ReadTextFile(file.get(), &read));
  EXPECT_EQ(read, text);
}

TEST(TextFile, TooLongATextIsRefused) {
  EXPECT_FALSE(MakeTextFile(std::string(board::wire::kTextLimit + 1, 'x')).valid());
  EXPECT_EQ(errno, EFBIG);
  const UniqueFd file = MakeTextFile("x");
  ASSERT_EQ(ftruncate(file.get(), off_t{board::wire::kTextLimit} + 1), 0);
  std::string read;
  EXPECT_FALSE(ReadTextFile(file.get(), &read));
  EXPECT_EQ(errno, EFBIG);
}

TEST(TextFile, WithoutSpaceThereIsNone) {
  const FailingCall failing("write", ENOSPC);
  EXPECT_FALSE(MakeTextFile("x").valid());
  EXPECT_EQ(errno, ENOSPC);
}

TEST(DescriptorMessage, CarriesPiecesOfEverySizeAndDescriptorsOfEveryNumber) {
  std::array<int, 2> ends{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
  const UniqueFd sender(ends[0]);
  const UniqueFd receiver(ends[1]);
  for (const int descriptor : {-1, STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO, sender.get()}) {
    for (const size_t size : {size_t{0}, size_t{1}, size_t{2}, size_t{4096}}) {
      std::string header = "head";
      std::string data(size, 'x');
      DescriptorMessage out(header.data(), header.size(), data.data(), data.size());
      ASSERT_EQ(out.Send(sender.get(), descriptor), static_cast<ssize_t>(4 + size));
      std::string text(4, '\0');
      std::string rest(size + 1, '\0');
      DescriptorMessage in(text.data(), text.size(), rest.data(), rest.size());
      ASSERT_EQ(in.Receive(receiver.get()), static_cast<ssize_t>(4 + size));
      const UniqueFd received(in.descriptor());
      EXPECT_EQ(text + rest, header + data + '\0');
      EXPECT_EQ(received.valid(), descriptor >= 0) << descriptor;
    }
  }
}

}  // namespace
}  // namespace kestrel::test
