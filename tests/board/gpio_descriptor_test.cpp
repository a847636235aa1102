// SPDX-License-Identifier: Apache-2.0
// Board descriptors as descriptors: every way to open, copy, pass on and run out of them.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "raw_gpio.h"
#include "support/descriptors.h"

extern "C" int __open_2(const char* path, int flags);
extern "C" int __openat64_2(int directory, const char* path, int flags);

namespace kestrel::test {
namespace {

constexpr char kChip[] = "/dev/gpiochip0";

bool IsChip(int fd) {
  gpiochip_info info{};
  return ioctl(fd, GPIO_GET_CHIPINFO_IOCTL, &info) == 0 && info.lines == 8;
}

TEST(GpioDescriptor, EveryNameOfOpenReachesTheChip) {
  EXPECT_TRUE(IsChip(open(kChip, O_RDONLY)));
  EXPECT_TRUE(IsChip(open64(kChip, O_RDONLY)));
  EXPECT_TRUE(IsChip(openat(AT_FDCWD, kChip, O_RDONLY)));
  EXPECT_TRUE(IsChip(openat64(AT_FDCWD, kChip, O_RDONLY)));
  EXPECT_TRUE(IsChip(__open_2(kChip, O_RDONLY)));
  EXPECT_TRUE(IsChip(__openat64_2(AT_FDCWD, kChip, O_RDONLY)));
}

TEST(GpioDescriptor, OpenFlagsAreHonoured) {
  const int plain = open(kChip, O_RDONLY);
  const int special = open(kChip, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  EXPECT_EQ(fcntl(plain, F_GETFD), 0);
  EXPECT_EQ(fcntl(plain, F_GETFL) & O_NONBLOCK, 0);
  EXPECT_EQ(fcntl(special, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(fcntl(special, F_GETFL) & O_NONBLOCK, O_NONBLOCK);
}

TEST(GpioDescriptor, ClosingReturnsWhatTheKernelDoes) {
  const int chip = open(kChip, O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(close(chip), 0);
  EXPECT_EQ(close(chip), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST(GpioDescriptor, OpenFlagsThatNoDeviceCanMeetAreRefused) {
  EXPECT_EQ(open(kChip, O_RDONLY | O_DIRECTORY), -1);
  EXPECT_EQ(errno, ENOTDIR);
  EXPECT_EQ(open(kChip, O_RDWR | O_CREAT | O_EXCL, 0600), -1);
  EXPECT_EQ(errno, EEXIST);
}

TEST(GpioDescriptor, RequestsForEveryDescriptorAreTheKernels) {
  const int chip = OpenChipDevice();
  int on = 1;
  EXPECT_EQ(ioctl(chip, FIONCLEX), 0);
  EXPECT_EQ(fcntl(chip, F_GETFD), 0);
  EXPECT_EQ(ioctl(chip, FIOCLEX), 0);
  EXPECT_EQ(fcntl(chip, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(ioctl(chip, FIONBIO, &on), 0);
  EXPECT_EQ(fcntl(chip, F_GETFL) & O_NONBLOCK, O_NONBLOCK);
}

TEST(GpioDescriptor, ProgramThatClearsItsEnvironmentStaysOnItsBoard) {
  const int before = OpenChipDevice();
  clearenv();
  EXPECT_TRUE(IsChip(before));
  EXPECT_TRUE(IsChip(OpenChipDevice()));
}

TEST(GpioDescriptor, OtherPathsAreLeftAlone) {
  EXPECT_EQ(open("/dev/gpiochip00", O_RDONLY), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(open("/dev/gpiochip", O_RDONLY), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(open("", O_RDONLY), -1);
  EXPECT_EQ(errno, ENOENT);
  const int null = open("/dev/null", O_RDONLY);
  EXPECT_GE(null, 0);
  EXPECT_FALSE(IsChip(null));
  EXPECT_EQ(errno, ENOTTY);
}

TEST(GpioDescriptor, ModeOfACreatedFileIsPassedOn) {
  char name[] = "/tmp/kestrel-mode-XXXXXX";
  close(mkstemp(name));
  unlink(name);
  const int file = open(name, O_RDWR | O_CREAT | O_EXCL, 0600);
  struct stat status {};
  EXPECT_EQ(fstat(file, &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  close(file);
  unlink(name);
}

TEST(GpioDescriptor, SuccessfulCallsLeaveErrnoAlone) {
  errno = 4242;
  const int chip = OpenChipDevice();
  const int line = RequestLine(chip, 0, GPIOHANDLE_REQUEST_INPUT);
  EXPECT_EQ(GetLine(line), 0);
  EXPECT_EQ(close(line), 0);
  EXPECT_EQ(close(chip), 0);
  EXPECT_EQ(close(dup(0)), 0);
  EXPECT_EQ(errno, 4242);
}

TEST(GpioDescriptor, OutlivesAnExec) {
  const int line = RequestLine(OpenChipDevice(), 0, GPIOHANDLE_REQUEST_OUTPUT, 1);
  fcntl(line, F_SETFD, 0);
  const std::string command = "exec " KESTREL_BOARD_PROGRAM " show | grep -q 'line   0  high'";
  EXPECT_EQ(system(command.c_str()), 0);
  EXPECT_EQ(GetLine(line), 1);
}

/// A socket message of one byte with room for one descriptor.
struct PassingMessage {
  PassingMessage() {
    header.msg_iov = &piece;
    header.msg_iovlen = 1;
    header.msg_control = control;
    header.msg_controllen = sizeof control;
  }

  char byte = 0;
  iovec piece{&byte, 1};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  msghdr header{};
};

bool PassOn(int socket, int descriptor) {
  PassingMessage message;
  cmsghdr* control = CMSG_FIRSTHDR(&message.header);
  control->cmsg_level = SOL_SOCKET;
  control->cmsg_type = SCM_RIGHTS;
  control->cmsg_len = CMSG_LEN(sizeof descriptor);
  memcpy(CMSG_DATA(control), &descriptor, sizeof descriptor);
  return sendmsg(socket, &message.header, 0) == 1;
}

int TakeOver(int socket) {
  PassingMessage message;
  EXPECT_EQ(recvmsg(socket, &message.header, 0), 1);
  const cmsghdr* control = CMSG_FIRSTHDR(&message.header);
  int descriptor = -1;
  if (control != nullptr) {
    memcpy(&descriptor, CMSG_DATA(control), sizeof descriptor);
  }
  return descriptor;
}

TEST(GpioDescriptor, CanBePassedToAnotherProcess) {
  int pair[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
  const pid_t child = fork();
  if (child == 0) {
    _exit(PassOn(pair[0], RequestLine(OpenChipDevice(), 0, GPIOHANDLE_REQUEST_OUTPUT, 1)) ? 0 : 1);
  }
  const int line = TakeOver(pair[1]);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(GetLine(line), 1);
  EXPECT_EQ(RequestLine(OpenChipDevice(), 0, GPIOHANDLE_REQUEST_INPUT), -EBUSY);
  close(line);
  EXPECT_GE(RequestLine(OpenChipDevice(), 0, GPIOHANDLE_REQUEST_INPUT), 0);
}

TEST(GpioDescriptor, RunningOutOfDescriptorsIsEmfileAndLeaksNone) {
  const int chip = OpenChipDevice();
  const rlim_t highest = static_cast<rlim_t>(*OpenDescriptors().rbegin());
  rlimit old{};
  getrlimit(RLIMIT_NOFILE, &old);
  const auto before = OpenDescriptors();
  for (rlim_t room = 0; room < 3; ++room) {
    const rlimit tight{highest + 1 + room, old.rlim_max};
    setrlimit(RLIMIT_NOFILE, &tight);
    const int line = RequestLine(chip, 0, GPIOHANDLE_REQUEST_INPUT);
    setrlimit(RLIMIT_NOFILE, &old);
    EXPECT_TRUE(line == -EMFILE || line >= 0) << line;
    if (line >= 0) {
      close(line);
    }
    EXPECT_EQ(OpenDescriptors(), before);
  }
  EXPECT_GE(RequestLine(chip, 0, GPIOHANDLE_REQUEST_INPUT), 0);
}

TEST(GpioDescriptor, OpeningWithoutADescriptorIsEmfile) {
  const auto before = OpenDescriptors();
  rlimit old{};
  getrlimit(RLIMIT_NOFILE, &old);
  const rlimit tight{static_cast<rlim_t>(*before.rbegin()) + 1, old.rlim_max};
  setrlimit(RLIMIT_NOFILE, &tight);
  // Those below the limit that are free.
  while (fcntl(STDIN_FILENO, F_DUPFD, 0) >= 0) {
  }
  const int chip = OpenChipDevice();
  setrlimit(RLIMIT_NOFILE, &old);
  EXPECT_EQ(chip, -EMFILE);
  EXPECT_GE(OpenChipDevice(), 0);
}

TEST(GpioDescriptor, GarbageWrittenToADescriptorDoesNotHarmTheBoard) {
  const int chip = OpenChipDevice();
  EXPECT_EQ(write(chip, "garbage", 7), 7);
  const std::string large(100000, 'x');
  EXPECT_GT(write(chip, large.data(), large.size()), 0);
  EXPECT_TRUE(IsChip(chip));
}

}  // namespace
}  // namespace kestrel::test
