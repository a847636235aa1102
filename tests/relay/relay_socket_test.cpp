// SPDX-License-Identifier: Apache-2.0
#include "relay_socket.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/error.h"
#include "support/descriptors.h"
#include "support/temporary_directory.h"
#include "unix_address.h"

namespace {

/// What the next call of that name does, besides noting that it was made.
struct Calls {
  std::string path;
  int listen_errno = 0;
  int lchown_errno = 0;
  int flock_errno = 0;
  int unlink_errno = 0;                ///< of `path`
  std::function<void()> before_flock;  ///< the next one
  std::function<void()> before_each_flock;
  std::optional<gid_t> group;                ///< that lchown was called with
  std::optional<gid_t> group_when_listened;  ///< the one before listen
  std::optional<mode_t> mode_when_listened;
} g_calls;

template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int FailWith(int error) {
  errno = error;
  return -1;
}

}  // namespace

extern "C" {

int listen(int fd, int backlog) noexcept {
  struct stat file {};
  if (stat(g_calls.path.c_str(), &file) == 0) {
    g_calls.mode_when_listened = file.st_mode & 07777;
    g_calls.group_when_listened = g_calls.group;
  }
  return g_calls.listen_errno != 0 ? FailWith(g_calls.listen_errno)
                                   : Next<int(int, int)>("listen")(fd, backlog);
}

// Giving a file away takes rights that a test need not have.
int lchown(const char* /*path*/, uid_t /*owner*/, gid_t group) noexcept {
  g_calls.group = group;
  return g_calls.lchown_errno != 0 ? FailWith(g_calls.lchown_errno) : 0;
}

int unlink(const char* path) noexcept {
  return g_calls.unlink_errno != 0 && path == g_calls.path
             ? FailWith(std::exchange(g_calls.unlink_errno, 0))
             : Next<int(const char*)>("unlink")(path);
}

int flock(int fd, int operation) noexcept {
  if (g_calls.before_flock) {
    std::exchange(g_calls.before_flock, nullptr)();
  }
  if (g_calls.before_each_flock) {
    g_calls.before_each_flock();
  }
  return g_calls.flock_errno != 0 ? FailWith(g_calls.flock_errno)
                                  : Next<int(int, int)>("flock")(fd, operation);
}

}  // extern "C"

namespace kestrel::relay {
namespace {

using board::BoardError;
using testing::Optional;

struct stat StatusOf(const std::string& path) {
  struct stat file {};
  EXPECT_EQ(lstat(path.c_str(), &file), 0) << path;
  return file;
}

struct stat StatusOfDescriptor(int descriptor) {
  struct stat file {};
  EXPECT_EQ(fstat(descriptor, &file), 0);
  return file;
}

class RelaySocketTest : public testing::Test {
 protected:
  RelaySocketTest() {
    g_calls = Calls();
    g_calls.path = path_;
  }
  ~RelaySocketTest() override {
    EXPECT_EQ(test::OpenDescriptors(), descriptors_);
    EXPECT_TRUE(folder_.IsEmpty());
  }

  std::string FailureOfOpening(const std::string& group = "") const {
    try {
      const RelaySocket socket(path_, 0640, group);
    } catch (const BoardError& error) {
      return error.what();
    }
    return "none";
  }

  const std::set<int> descriptors_ = test::OpenDescriptors();
  const test::TemporaryDirectory folder_;
  const std::string path_ = folder_.path() + "/socket";
};

TEST_F(RelaySocketTest, HasItsModeAndGroupBeforeAnybodyCanConnect) {
  const mode_t umask_before = umask(027);
  const RelaySocket socket(path_, 0626, "4711");
  EXPECT_THAT(g_calls.mode_when_listened, Optional(0626U));
  EXPECT_THAT(g_calls.group_when_listened, Optional(4711U));
  EXPECT_EQ(umask(umask_before), 027U);
}

TEST_F(RelaySocketTest, FindsItsGroupByName) {
  const RelaySocket socket(path_, 0660, "root");
  EXPECT_THAT(g_calls.group, Optional(0U));
}

TEST_F(RelaySocketTest, KeepsTheGroupOfTheProcessUnlessOneIsGiven) {
  const RelaySocket socket(path_, 0660, "");
  EXPECT_THAT(g_calls.group, Optional(static_cast<gid_t>(-1)));
}

TEST_F(RelaySocketTest, GroupThatMayNotBeGivenIsAFailure) {
  g_calls.lchown_errno = EPERM;
  EXPECT_EQ(FailureOfOpening("4711"), path_ + ": Operation not permitted");
}

TEST_F(RelaySocketTest, NumbersBeyondGroupsAreNone) {
  EXPECT_EQ(FailureOfOpening("4294967296"), "there is no group '4294967296'");
  EXPECT_EQ(FailureOfOpening("12a"), "there is no group '12a'");
}

TEST_F(RelaySocketTest, RemovingADeadSocketCanFail) {
  const board::UniqueFd dead(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  const UnixAddress address(path_);
  ASSERT_EQ(bind(dead.get(), address.get(), UnixAddress::size()), 0);
  g_calls.unlink_errno = EPERM;
  EXPECT_EQ(FailureOfOpening(), path_ + ": Operation not permitted");
  EXPECT_TRUE(std::filesystem::remove(path_));
}

TEST_F(RelaySocketTest, LinkIsNoSocketWhereverItLeads) {
  const std::string dead = folder_.path() + "/dead";
  const board::UniqueFd bound(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  const UnixAddress address(dead);
  ASSERT_EQ(bind(bound.get(), address.get(), UnixAddress::size()), 0);
  for (const std::string& target : {dead, folder_.path() + "/missing"}) {
    std::filesystem::create_symlink(target, path_);
    EXPECT_EQ(FailureOfOpening(), path_ + ": is there already, and no socket");
    EXPECT_TRUE(std::filesystem::remove(path_));
  }
  EXPECT_TRUE(std::filesystem::remove(dead));
}

TEST_F(RelaySocketTest, PathMayBeAsLongAsAnAddress) {
  const std::string path = path_ + std::string(kLongestSocketPath - path_.size(), 'x');
  const RelaySocket socket(path, 0660, "");
  EXPECT_TRUE(HasListener(path, SOCK_SEQPACKET));
  EXPECT_TRUE(S_ISSOCK(StatusOf(path).st_mode));
}

TEST_F(RelaySocketTest, ManyMayWaitToBeAccepted) {
  const RelaySocket relay(path_, 0660, "");
  const UnixAddress address(path_);
  std::vector<board::UniqueFd> programs;
  while (programs.size() < 64) {
    programs.emplace_back(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    EXPECT_EQ(connect(programs.back().get(), address.get(), UnixAddress::size()), 0);
  }
}

TEST_F(RelaySocketTest, ListeningCanFail) {
  g_calls.listen_errno = ENOBUFS;
  EXPECT_EQ(FailureOfOpening(), path_ + ": No buffer space available");
}

TEST_F(RelaySocketTest, LockingCanFail) {
  g_calls.flock_errno = ENOLCK;
  EXPECT_EQ(FailureOfOpening(), path_ + ".lock: No locks available");
  // The file that it made: whether somebody else has locked it, it could not tell.
  EXPECT_TRUE(std::filesystem::remove(path_ + ".lock"));
}

TEST_F(RelaySocketTest, LockThatIsRemovedWhileItIsTakenIsTakenAnew) {
  g_calls.before_flock = [this] { unlink((path_ + ".lock").c_str()); };
  const RelaySocket socket(path_, 0660, "");
  const int lock = open((path_ + ".lock").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(lock, 0);
  EXPECT_EQ(flock(lock, LOCK_EX | LOCK_NB), -1);
  EXPECT_EQ(errno, EWOULDBLOCK);
  close(lock);
}

TEST_F(RelaySocketTest, LockThatIsReplacedWhileItIsTakenIsTakenAnew) {
  const std::string lock = path_ + ".lock";
  ino_t replacement = 0;
  g_calls.before_flock = [&] {
    // Beside the old one, so that it gets another number.
    const std::string name = folder_.Write("replacement", "");
    chmod(name.c_str(), 0600);
    replacement = StatusOf(name).st_ino;
    std::filesystem::rename(name, lock);
  };
  const RelaySocket socket(path_, 0660, "");
  EXPECT_EQ(StatusOf(lock).st_ino, replacement);
  const board::UniqueFd another(open(lock.c_str(), O_RDWR | O_CLOEXEC));
  EXPECT_EQ(flock(another.get(), LOCK_EX | LOCK_NB), -1);
  EXPECT_EQ(errno, EWOULDBLOCK);
}

TEST_F(RelaySocketTest, LockThatIsRemovedAgainAndAgainIsGivenUp) {
  g_calls.before_each_flock = [this] { unlink((path_ + ".lock").c_str()); };
  EXPECT_EQ(FailureOfOpening(), "cannot lock " + path_ + ".lock: somebody keeps removing it");
}

TEST_F(RelaySocketTest, LockCanBeOpenedByItsUserAlone) {
  const mode_t umask_before = umask(0);
  const RelaySocket socket(path_, 0666, "");
  umask(umask_before);
  EXPECT_EQ(StatusOf(path_ + ".lock").st_mode & 07777, 0600U);
}

/// A lock as relays made it before, opened and locked by somebody who may only read it.
class RelaySocketWithAWideLock : public RelaySocketTest {
 protected:
  RelaySocketWithAWideLock() {
    folder_.Write("socket.lock", "4711");
    chmod((path_ + ".lock").c_str(), 0644);
    stranger_ = board::UniqueFd(open((path_ + ".lock").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(flock(stranger_.get(), LOCK_EX | LOCK_NB), 0);
  }

  board::UniqueFd stranger_;
};

TEST_F(RelaySocketWithAWideLock, StrangerCannotKeepTheRelayOut) {
  const RelaySocket socket(path_, 0660, "");
  EXPECT_EQ(StatusOf(path_ + ".lock").st_mode & 07777, 0600U);
  EXPECT_NE(StatusOf(path_ + ".lock").st_ino, StatusOfDescriptor(stranger_.get()).st_ino);
  // Nor can one who opened it keep the next relay out.
  EXPECT_EQ(FailureOfOpening(),
            path_ + ": a relay serves it already, process " + std::to_string(getpid()));
}

TEST_F(RelaySocketWithAWideLock, StrangerWhoWaitsForItGetsNothing) {
  ASSERT_EQ(flock(stranger_.get(), LOCK_UN), 0);
  const RelaySocket socket(path_, 0660, "");
  // Whoever has the file open would have the lock as soon as the relay is killed.
  EXPECT_NE(StatusOf(path_ + ".lock").st_ino, StatusOfDescriptor(stranger_.get()).st_ino);
  EXPECT_EQ(flock(stranger_.get(), LOCK_EX | LOCK_NB), 0);
}

TEST_F(RelaySocketWithAWideLock, RelayThatListensKeepsItsPlace) {
  const board::UniqueFd older(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  const UnixAddress address(path_);
  ASSERT_EQ(bind(older.get(), address.get(), UnixAddress::size()), 0);
  ASSERT_EQ(listen(older.get(), 1), 0);
  EXPECT_EQ(FailureOfOpening(), path_ + ": a relay serves it already, process 4711");
  EXPECT_EQ(StatusOf(path_ + ".lock").st_ino, StatusOfDescriptor(stranger_.get()).st_ino);
  unlink(path_.c_str());
  unlink((path_ + ".lock").c_str());
}

TEST_F(RelaySocketTest, LockThatIsNoFileIsNone) {
  ASSERT_EQ(mkfifo((path_ + ".lock").c_str(), 0600), 0);
  EXPECT_EQ(FailureOfOpening(), "cannot lock " + path_ + ".lock: it is not a regular file");
  EXPECT_TRUE(std::filesystem::remove(path_ + ".lock"));
}

}  // namespace
}  // namespace kestrel::relay
