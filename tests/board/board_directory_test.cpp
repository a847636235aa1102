// SPDX-License-Identifier: Apache-2.0
// What a system call that fails leaves behind while the folder of a board is made.
#include "host/board_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "devices/network/network_status.h"
#include "failing_call.h"
#include "host/error.h"
#include "host/file_replacement.h"
#include "support/descriptors.h"
#include "support/in_child.h"
#include "support/temporary_directory.h"

namespace kestrel::test {
namespace {

using board::BoardDirectory;
using board::BoardError;

class BoardDirectoryTest : public testing::Test {
 protected:
  BoardDirectoryTest() { setenv("KESTREL_BOARD_DIR", Common().c_str(), 1); }
  ~BoardDirectoryTest() override { unsetenv("KESTREL_BOARD_DIR"); }

  std::string Common() const { return folder_.path() + "/boards"; }

  /// The reason for which no board was made; empty when one was.
  static std::string Refusal(std::vector<std::string> files = {}) {
    try {
      const BoardDirectory directory("bench", std::move(files));
    } catch (const BoardError& error) {
      return error.what();
    }
    return "";
  }

  void ExpectNothingLeft() const {
    EXPECT_TRUE(!std::filesystem::exists(Common()) || std::filesystem::is_empty(Common()));
  }

  const TemporaryDirectory folder_;
};

struct Failure {
  const char* call;
  int error;
  const char* where;
};

void PrintTo(const Failure& failure, std::ostream* out) { *out << failure.call; }

class FailingStart : public BoardDirectoryTest, public testing::WithParamInterface<Failure> {};

TEST_P(FailingStart, TellsTheReasonAndLeavesNothing) {
  const std::set<int> descriptors = OpenDescriptors();
  {
    const FailingCall failing(GetParam().call, GetParam().error);
    EXPECT_EQ(Refusal(), Common() + GetParam().where + ": " + strerror(GetParam().error));
    EXPECT_TRUE(FailingCall::HasFailed());
  }
  ExpectNothingLeft();
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(Refusal(), "");
}

INSTANTIATE_TEST_SUITE_P(
    All, FailingStart,
    testing::Values(Failure{"mkdir", ENOSPC, ""}, Failure{"open", EACCES, ""},
                    Failure{"mkdtemp", ENOSPC, "/bench"}, Failure{"openat lock", ENOSPC, "/bench"},
                    Failure{"openat lock", EMFILE, "/bench"}, Failure{"flock", ENOLCK, "/bench"},
                    Failure{"pwrite", EIO, "/bench"}, Failure{"pwrite half", ENOSPC, "/bench"},
                    Failure{"renameat", ENOSPC, "/bench"}));

class PassingFailure : public BoardDirectoryTest, public testing::WithParamInterface<Failure> {};

TEST_P(PassingFailure, OfARaceIsTriedAgain) {
  const FailingCall failing(GetParam().call, GetParam().error);
  EXPECT_EQ(Refusal(), "");
  EXPECT_TRUE(FailingCall::HasFailed());
  ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(
    All, PassingFailure,
    testing::Values(Failure{"mkdtemp", ENOENT, ""}, Failure{"openat lock", ENOENT, ""},
                    Failure{"flock", EWOULDBLOCK, ""}, Failure{"fstatat", ENOENT, ""},
                    Failure{"renameat", ENOTEMPTY, ""}, Failure{"renameat", EEXIST, ""},
                    Failure{"renameat", ENOENT, ""}));

TEST_F(BoardDirectoryTest, WithoutALookAtItTheCommonFolderIsRefused) {
  const FailingCall failing("fstat", EIO);
  EXPECT_EQ(Refusal(), Common() + ": " + strerror(EIO));
}

TEST_F(BoardDirectoryTest, AdoptionWithoutSpaceIsToldAndLeavesNothing) {
  {
    BoardDirectory directory("bench", {});
    const FailingCall failing("pwrite", ENOSPC);
    EXPECT_THROW(directory.Adopt(), BoardError);
  }
  ExpectNothingLeft();
}

TEST_F(BoardDirectoryTest, BoardThatIsKilledAsItCleansUpIsInNobodysWay) {
  const auto die_at_the_first_removal = [] {
    std::optional<FailingCall> end;
    const BoardDirectory directory("bench", {"one", "two"});
    std::ofstream(directory.path() + "/one") << "1";
    std::ofstream(directory.path() + "/two") << "2";
    end.emplace("unlinkat and end", 0);
    // What goes first at the end of this scope is the board.
    return 1;
  };
  EXPECT_EQ(InChild(die_at_the_first_removal), 0);
  EXPECT_TRUE(std::filesystem::exists(Common() + "/bench"));
  EXPECT_EQ(Refusal({"one", "two"}), "");
}

TEST_F(BoardDirectoryTest, DisownedFolderStaysForTheProcessThatHasIt) {
  {
    BoardDirectory directory("bench", {});
    directory.Disown();
  }
  EXPECT_TRUE(std::filesystem::exists(Common() + "/bench/lock"));
}

class FailingReplacement : public BoardDirectoryTest,
                           public testing::WithParamInterface<Failure> {};

TEST_P(FailingReplacement, LeavesTheFileAndNothingElse) {
  const std::string path = folder_.Write("file", "before");
  {
    const FailingCall failing(GetParam().call, GetParam().error);
    errno = 0;
    EXPECT_FALSE(board::ReplaceFile(path, "after", 0600));
    EXPECT_EQ(errno, GetParam().error);
    EXPECT_TRUE(FailingCall::HasFailed());
  }
  EXPECT_EQ(std::filesystem::file_size(path), strlen("before"));
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
}

INSTANTIATE_TEST_SUITE_P(All, FailingReplacement,
                         testing::Values(Failure{"open", ENOSPC, ""}, Failure{"write", ENOSPC, ""},
                                         Failure{"rename", EIO, ""}));

TEST_F(BoardDirectoryTest, ReplacementIsPrivateAlsoWhereAnotherIsLeftOver) {
  const std::string path = folder_.Write("file", "before");
  const std::string left_over = folder_.Write("file.new", "left over");
  ASSERT_EQ(chmod(left_over.c_str(), 0666), 0);
  ASSERT_TRUE(board::ReplaceFile(path, "secret", 0600));
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
  EXPECT_EQ(std::filesystem::file_size(path), strlen("secret"));
  EXPECT_FALSE(std::filesystem::exists(left_over));
}

TEST_F(BoardDirectoryTest, ReplacementDoesNotFollowALinkThatIsLeftOver) {
  const std::string thesis = folder_.Write("thesis", "before");
  const std::string path = folder_.path() + "/file";
  std::filesystem::create_symlink(thesis, path + ".new");
  ASSERT_TRUE(board::ReplaceFile(path, "after it", 0600));
  EXPECT_EQ(std::filesystem::file_size(thesis), strlen("before"));
  EXPECT_EQ(std::filesystem::file_size(path), strlen("after it"));
}

TEST_F(BoardDirectoryTest, StatusFileWithoutSpaceIsToldAndLeavesNothing) {
  const FailingCall failing("write", ENOSPC);
  try {
    const board::network::StatusFile file(folder_.path(), board::network::ParseStatus("ready"));
    FAIL() << "it was written";
  } catch (const BoardError& error) {
    EXPECT_EQ(error.what(), folder_.path() + "/network_status: " + strerror(ENOSPC));
  }
  EXPECT_TRUE(folder_.IsEmpty());
}

}  // namespace
}  // namespace kestrel::test
