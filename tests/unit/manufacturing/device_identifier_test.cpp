// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <kestrel/manufacturing.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>

#include "manufacturing/security_manager.h"
#include "support/broken_standard_error.h"
#include "support/fake_system.h"
#include "support/outcome.h"
#include "support/scarce_memory.h"

namespace kestrel::test {
namespace {

using testing::_;
using testing::Return;
using testing::StrEq;

constexpr int kLodestone = 910;
constexpr int kWarden = 911;
constexpr char kUnset = '~';
constexpr size_t kBufferSize = 4096;

/// A test in which every system call is expected, in order, and none else is made.
class DeviceId : public testing::Test {
 protected:
  void ExpectOpen(const char* path, int descriptor) {
    // O_RDONLY and O_CLOEXEC.
    EXPECT_CALL(system_, Open(StrEq(path), 0x80000)).WillOnce(Return(descriptor));
  }

  void ExpectOpens(int lodestone = kLodestone, int warden = kWarden) {
    ExpectOpen("/dev/lodestone", lodestone);
    ExpectOpen("/dev/warden", warden);
  }

  void ExpectClose(int descriptor) { EXPECT_CALL(system_, Close(descriptor)).WillOnce(Return(0)); }

  void ExpectCloses() {
    ExpectClose(kLodestone);
    ExpectClose(kWarden);
  }

  /// The driver fills all 132 bytes of its record; `id` is the identifier.
  void ExpectAnswer(const std::string& id, int result = 0) {
    EXPECT_CALL(system_, Ioctl(kWarden, 0xC0847001, _))
        .WillOnce([id, result](int, unsigned long, void* record) {
          memset(record, 0xEE, 68);
          memcpy(static_cast<char*>(record) + 68, id.data(), 64);
          return result;
        });
  }

  Observed Get(size_t size = kBufferSize) {
    return ObserveOn(system_,
                     [this, size] { return Manufacturing_GetDeviceId(text_.data(), size); });
  }

  /// What the call wrote, up to its NUL.
  std::string Text() const { return text_.substr(0, text_.find('\0')); }

  bool IsUntouched(size_t from = 0) const {
    return text_.find_first_not_of(kUnset, from) == std::string::npos;
  }

  static std::string Problem(int number) {
    return "[Kestrel:Manufacturing] error retrieving device state: " + std::to_string(number) +
           "\n";
  }

  testing::InSequence in_sequence_;
  testing::StrictMock<FakeSystem> system_;
  std::string text_ = std::string(kBufferSize, kUnset);
};

std::string Identifier() {
  std::string id(64, '\x5C');
  id.replace(0, 4, std::string("\x00\x01\xAB\xFF", 4));
  id[63] = '\x0F';
  return id;
}

std::string IdentifierText() {
  std::string text = "0001ABFF";
  for (int i = 4; i < 63; ++i) {
    text += "5C";
  }
  return text + "0F";
}

TEST_F(DeviceId, HasItsSize) {
  EXPECT_THAT(ObserveOn(system_, [] { return static_cast<int>(Manufacturing_GetDeviceIdSize()); }),
              Returns(129));
}

TEST_F(DeviceId, IsWrittenAsUpperCaseHexadecimal) {
  ExpectOpens();
  ExpectAnswer(Identifier());
  ExpectCloses();
  EXPECT_THAT(Get(129), Returns(129));
  EXPECT_EQ(Text(), IdentifierText());
  EXPECT_TRUE(IsUntouched(129));
}

TEST_F(DeviceId, CanBeAnyBytes) {
  for (int first = 0; first < 256; first += 64) {
    std::string id(64, '\0');
    std::string expected;
    for (int i = 0; i < 64; ++i) {
      const int byte = first + i;
      id[static_cast<size_t>(i)] = static_cast<char>(byte);
      expected += "0123456789ABCDEF"[byte / 16];
      expected += "0123456789ABCDEF"[byte % 16];
    }
    ExpectOpens();
    ExpectAnswer(id);
    ExpectCloses();
    EXPECT_THAT(Get(), Returns(129));
    EXPECT_EQ(Text(), expected);
  }
}

TEST_F(DeviceId, LeavesTheRestOfALargerBufferAlone) {
  ExpectOpens();
  ExpectAnswer(Identifier());
  ExpectCloses();
  EXPECT_THAT(Get(4096), Returns(129));
  EXPECT_TRUE(IsUntouched(129));
}

TEST_F(DeviceId, ComesWithAPositiveAnswerAsWell) {
  ExpectOpens();
  ExpectAnswer(Identifier(), 3);
  ExpectCloses();
  EXPECT_THAT(Get(), Returns(129));
  EXPECT_EQ(Text(), IdentifierText());
}

TEST_F(DeviceId, NeedsAPlace) {
  for (const size_t size : {size_t{0}, size_t{128}, size_t{129}, SIZE_MAX}) {
    EXPECT_THAT(ObserveOn(system_, [size] { return Manufacturing_GetDeviceId(nullptr, size); }),
                IsRefused(EFAULT));
  }
}

TEST_F(DeviceId, NeedsRoomAndIsEmptyWithout) {
  for (const size_t size : {size_t{1}, size_t{2}, size_t{64}, size_t{127}, size_t{128}}) {
    text_.assign(kBufferSize, kUnset);
    EXPECT_THAT(Get(size), IsRefused(ERANGE)) << size;
    EXPECT_EQ(text_[0], '\0') << size;
    EXPECT_TRUE(IsUntouched(1)) << size;
  }
}

TEST_F(DeviceId, TouchesNothingWithoutAnyRoom) {
  EXPECT_THAT(Get(0), IsRefused(ERANGE));
  EXPECT_TRUE(IsUntouched());
}

TEST_F(DeviceId, DoesNotDependOnTheOtherNode) {
  ExpectOpens(-1, kWarden);
  ExpectAnswer(Identifier());
  ExpectClose(kWarden);
  EXPECT_THAT(Get(), Returns(129));
  EXPECT_EQ(Text(), IdentifierText());
}

TEST_F(DeviceId, IsDeniedWithoutItsNode) {
  ExpectOpens(kLodestone, -1);
  ExpectClose(kLodestone);
  EXPECT_THAT(Get(), Fails(EACCES, Problem(107)));
  EXPECT_TRUE(IsUntouched());
}

TEST_F(DeviceId, IsDeniedWithoutBothNodes) {
  ExpectOpens(-1, -1);
  EXPECT_THAT(Get(), Fails(EACCES, Problem(107)));
  EXPECT_TRUE(IsUntouched());
}

class DeviceIdOpenError : public DeviceId, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, DeviceIdOpenError,
                         testing::Values(ENOENT, EACCES, EMFILE, EBUSY, ENODEV),
                         [](const auto& test) { return strerrorname_np(test.param); });

TEST_P(DeviceIdOpenError, IsNotTold) {
  EXPECT_CALL(system_, Open(_, _)).WillOnce(FailWith(GetParam()));
  EXPECT_CALL(system_, Open(_, _)).WillOnce(FailWith(GetParam()));
  EXPECT_THAT(Get(), Fails(EACCES, Problem(107)));
}

class DeviceIdAnswer : public DeviceId, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Negative, DeviceIdAnswer, testing::Values(-1, -2, -22, INT_MIN));

TEST_P(DeviceIdAnswer, IsPrintedAsItIs) {
  ExpectOpens();
  ExpectAnswer(Identifier(), GetParam());
  ExpectCloses();
  EXPECT_THAT(Get(), Fails(EACCES, Problem(GetParam())));
  EXPECT_TRUE(IsUntouched());
}

TEST_F(DeviceId, IsDeniedWhateverTheDriversErrno) {
  for (const int error : {EIO, EBADF, ENOTTY, EINVAL, 0}) {
    ExpectOpens();
    EXPECT_CALL(system_, Ioctl(_, _, _)).WillOnce(FailWith(error));
    ExpectCloses();
    EXPECT_THAT(Get(), Fails(EACCES, Problem(-1)));
  }
}

TEST_F(DeviceId, DoesNotDependOnTheCloses) {
  ExpectOpens();
  ExpectAnswer(Identifier());
  EXPECT_CALL(system_, Close(kLodestone)).WillOnce(FailWith(EIO));
  EXPECT_CALL(system_, Close(kWarden)).WillOnce(FailWith(EINTR));
  EXPECT_THAT(Get(), Returns(129));
  EXPECT_EQ(Text(), IdentifierText());
}

TEST_F(DeviceId, IsDeniedAlsoWhenTheClosesFail) {
  ExpectOpens();
  EXPECT_CALL(system_, Ioctl(_, _, _)).WillOnce(FailWith(ENOTTY));
  EXPECT_CALL(system_, Close(kLodestone)).WillOnce(FailWith(EIO));
  EXPECT_CALL(system_, Close(kWarden)).WillOnce(FailWith(EINTR));
  EXPECT_THAT(Get(), Fails(EACCES, Problem(-1)));
}

TEST_F(DeviceId, IsDeniedAlsoWhenStandardErrorIsClosed) {
  ExpectOpens(kLodestone, -1);
  ExpectClose(kLodestone);
  EXPECT_THAT(Observe([this] {
                const ClosedStandardError closed;
                return RunOn(system_, [this] {
                  return Manufacturing_GetDeviceId(text_.data(), text_.size());
                });
              }),
              Fails(EACCES, ""));
}

TEST_F(DeviceId, IsNotPermittedWithoutMemory) {
  const ScarceMemory scarce;
  EXPECT_THAT(Get(), Fails(EPERM,
                           "Failed to create SecurityManager.\n"
                           "[Kestrel:Manufacturing] error querying device state\n"));
  EXPECT_TRUE(IsUntouched());
}

TEST_F(DeviceId, WorksWithDescriptorZero) {
  ExpectOpens(kLodestone, 0);
  EXPECT_CALL(system_, Ioctl(0, _, _)).WillOnce(Return(-1));
  ExpectClose(kLodestone);
  ExpectClose(0);
  EXPECT_THAT(Get(), Fails(EACCES, Problem(-1)));
}

TEST(SecurityManager, HoldsTwoDescriptors) {
  EXPECT_EQ(sizeof(manufacturing::SecurityManager), 8u);
  EXPECT_EQ(sizeof(manufacturing::DeviceStateRecord), 132u);
  EXPECT_EQ(offsetof(manufacturing::DeviceStateRecord, device_id), 68u);
}

}  // namespace
}  // namespace kestrel::test
