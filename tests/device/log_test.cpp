// SPDX-License-Identifier: Apache-2.0
// Where the text of the debug log arrives.
#include <errno.h>
#include <fcntl.h>
#include <kestrel/log.h>
#include <unistd.h>

#include "board/serial_port.h"
#include "rig.h"
#include "support/broken_standard_error.h"
#include "support/outcome.h"
#include "support/temporary_directory.h"

namespace kestrel::test {
namespace {

/// Another file in the place of a descriptor, for the length of a scope.
class Redirection {
 public:
  Redirection(int descriptor, int target) : descriptor_(descriptor), saved_(dup(descriptor)) {
    dup2(target, descriptor);
  }
  ~Redirection() {
    dup2(saved_, descriptor_);
    close(saved_);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

 private:
  int descriptor_;
  int saved_;
};

TEST(DeviceLog, TextArrivesAtStandardErrorAsItIs) {
  EXPECT_THAT(Observe([] { return Log_Debug("%s %d %#x", "line", 5, 255U); }),
              Returns(0, "line 5 0xff"));
}

TEST(DeviceLog, NothingArrivesAtStandardOutput) {
  const TemporaryDirectory folder;
  const int file = open(folder.Write("output", "").c_str(), O_RDWR | O_CLOEXEC);
  const Redirection redirection(STDOUT_FILENO, file);
  EXPECT_THAT(Observe([] { return Log_Debug("%s\n", "text"); }), Returns(0, "text\n"));
  fflush(stdout);
  EXPECT_EQ(lseek(file, 0, SEEK_END), 0);
  close(file);
}

TEST(DeviceLog, EachCallIsOneWrite) {
  const PacketStandardError standard_error;
  EXPECT_EQ(Log_Debug("%s", "one "), 0);
  EXPECT_EQ(Log_Debug("%d %s\n", 2, "two"), 0);
  EXPECT_THAT(standard_error.Received(), testing::ElementsAre("one ", "2 two\n"));
}

TEST(DeviceLog, TextArrivesAtTheOtherEndOfASerialConsole) {
  const int console = OpenPort(kLeftPort);
  const int other_end = OpenPort(kRightPort);
  {
    const Redirection redirection(STDERR_FILENO, console);
    EXPECT_EQ(Log_Debug("started %s\r\n", "well"), 0);
  }
  EXPECT_EQ(ReadFrom(other_end, 14), "started well\r\n");
  close(console);
  close(other_end);
}

TEST(DeviceLog, NoRoomIsTold) {
  const FullStandardError full;
  errno = 0;
  EXPECT_EQ(Log_Debug("text"), -1);
  EXPECT_EQ(errno, ENOSPC);
}

TEST(DeviceLog, ClosedStandardErrorIsTold) {
  const ClosedStandardError closed;
  errno = 0;
  EXPECT_EQ(Log_Debug("text"), -1);
  EXPECT_EQ(errno, EBADF);
}

}  // namespace
}  // namespace kestrel::test
