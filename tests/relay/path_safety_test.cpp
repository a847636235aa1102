// SPDX-License-Identifier: Apache-2.0
#include "path_safety.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>

#include "client_folder.h"
#include "host/error.h"
#include "support/temporary_directory.h"

namespace {

std::optional<uid_t> g_user;

}  // namespace

extern "C" uid_t geteuid() noexcept { return g_user.value_or(getuid()); }

namespace kestrel::relay {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class PathSafety : public testing::Test {
 protected:
  ~PathSafety() override { g_user.reset(); }

  /// A folder in the test's own, with its mode.
  std::string Make(const std::string& name, mode_t mode) const {
    std::string path = folder_.path() + "/" + name;
    fs::create_directories(path);
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
    return path;
  }

  /// Gives a file to a user who is neither root nor the user of the relay. Not everybody may do
  /// that, but whoever is not root can make the relay believe that it runs as another.
  static uid_t GiveAway(const std::string& path) {
    constexpr uid_t kOther = 4711;
    if (getuid() == 0) {
      EXPECT_EQ(
          fchownat(AT_FDCWD, path.c_str(), kOther, static_cast<gid_t>(-1), AT_SYMLINK_NOFOLLOW), 0);
      return kOther;
    }
    g_user = kOther;
    return getuid();
  }

  static std::string FailureOfPreparing(const std::string& folder) {
    try {
      PrepareClientFolder(folder);
    } catch (const board::BoardError& error) {
      return error.what();
    }
    return "none";
  }

  const test::TemporaryDirectory folder_;
};

TEST_F(PathSafety, FolderThatOthersCanOnlyReadIsSafe) {
  EXPECT_THAT(RisksOf("/"), IsEmpty());
  EXPECT_THAT(RisksOf(Make("folder", 0755)), IsEmpty());
  EXPECT_THAT(RisksOf(Make("folder/deeper", 0755)), IsEmpty());
}

TEST_F(PathSafety, FolderThatOthersCanWriteToIsNot) {
  const std::string of_all = Make("all", 0777);
  EXPECT_THAT(RisksOf(of_all), ElementsAre("everybody can write to " + of_all));
  const std::string of_group = Make("group", 0775);
  EXPECT_THAT(RisksOf(of_group), ElementsAre("a group can write to " + of_group));
}

TEST_F(PathSafety, StickyBitDoesNotKeepANameThatIsFree) {
  const std::string sticky = Make("sticky", 01777);
  EXPECT_THAT(RisksOf(sticky), ElementsAre("everybody can write to " + sticky));
  EXPECT_THAT(RisksOf(sticky + "/missing"), ElementsAre("everybody can write to " + sticky));
}

TEST_F(PathSafety, StickyBitKeepsFoldersThatAreThere) {
  Make("sticky", 01777);
  EXPECT_THAT(RisksOf(Make("sticky/folder", 0755)), IsEmpty());
}

TEST_F(PathSafety, FolderOnTheWayCountsAsWell) {
  const std::string of_all = Make("all", 0777);
  EXPECT_THAT(RisksOf(Make("all/folder", 0755)), ElementsAre("everybody can write to " + of_all));
  const std::string of_group = Make("group", 0775);
  EXPECT_THAT(RisksOf(Make("group/folder", 0755), GroupWriting::kIsIntended),
              ElementsAre("a group can write to " + of_group));
}

TEST_F(PathSafety, GroupMayBeMeantToWrite) {
  EXPECT_THAT(RisksOf(Make("group", 0770), GroupWriting::kIsIntended), IsEmpty());
  const std::string of_all = Make("all", 0777);
  EXPECT_THAT(RisksOf(of_all, GroupWriting::kIsIntended),
              ElementsAre("everybody can write to " + of_all));
  const std::string of_group = Make("parent", 0775);
  EXPECT_THAT(RisksOf(of_group + "/missing", GroupWriting::kIsIntended),
              ElementsAre("a group can write to " + of_group));
}

TEST_F(PathSafety, LinksAreFollowed) {
  const std::string of_all = Make("all", 0777);
  Make("all/folder", 0755);
  fs::create_symlink("all/./folder/../folder/", folder_.path() + "/relative");
  EXPECT_THAT(RisksOf(folder_.path() + "/relative"),
              ElementsAre("everybody can write to " + of_all));
  fs::create_symlink(of_all, folder_.path() + "/absolute");
  EXPECT_THAT(RisksOf(folder_.path() + "/absolute/folder/"),
              ElementsAre("everybody can write to " + of_all));
  // Whoever can replace the link counts too.
  fs::create_symlink(Make("safe", 0755), of_all + "/link");
  EXPECT_THAT(RisksOf(of_all + "/link"), ElementsAre("everybody can write to " + of_all));
}

TEST_F(PathSafety, AsManyLinksAreFollowedAsTheKernelFollows) {
  std::string path = Make("all", 0777);
  for (int link = 1; link <= 41; ++link) {
    fs::create_symlink(path, folder_.path() + "/" + std::to_string(link));
    path = folder_.path() + "/" + std::to_string(link);
    EXPECT_EQ(RisksOf(path).size(), access(path.c_str(), F_OK) == 0 ? 1U : 0U) << link;
  }
  EXPECT_EQ(errno, ELOOP);
}

TEST_F(PathSafety, LinksThatLeadNowhereEnd) {
  fs::create_symlink("circle", folder_.path() + "/circle");
  EXPECT_THAT(RisksOf(folder_.path() + "/circle"), IsEmpty());
  // What would come next is not looked up elsewhere, so this folder's group is not the
  // supplicant's.
  const std::string of_group = Make("group", 0775);
  fs::create_symlink("circle", of_group + "/circle");
  folder_.Write("group/file", "");
  for (const char* const name : {"/circle", "/file"}) {
    EXPECT_THAT(RisksOf(of_group + name, GroupWriting::kIsIntended),
                ElementsAre("a group can write to " + of_group));
  }
}

TEST_F(PathSafety, FolderOfSomebodyElseIsNotSafe) {
  const std::string folder = Make("folder", 0755);
  const std::string inside = Make("folder/inside", 0755);
  const std::string owner = std::to_string(GiveAway(folder));
  EXPECT_THAT(RisksOf(inside), testing::Contains(folder + " belongs to user " + owner));
}

TEST_F(PathSafety, LinkOfSomebodyElseIsNotSafe) {
  const std::string link = folder_.path() + "/link";
  fs::create_symlink("/", link);
  const std::string owner = std::to_string(GiveAway(link));
  EXPECT_THAT(RisksOf(link), testing::Contains(link + " belongs to user " + owner));
}

TEST_F(PathSafety, ClientFolderIsMadeAndMayBeThere) {
  const std::string folder = folder_.path() + "/clients";
  EXPECT_EQ(PrepareClientFolder(folder + "/"), 0);
  EXPECT_EQ(PrepareClientFolder(folder), 0);
}

TEST_F(PathSafety, ClientFolderOfSomebodyElseIsRefused) {
  const std::string folder = Make("clients", 0777);
  const std::string owner = std::to_string(GiveAway(folder));
  EXPECT_EQ(FailureOfPreparing(folder),
            "cannot use " + folder + " for links: it belongs to user " + owner);
}

TEST_F(PathSafety, ClientFolderThatIsALinkIsRefused) {
  const std::string link = folder_.path() + "/link";
  fs::create_symlink(Make("clients", 0755), link);
  for (const char* const end : {"", "/", "//"}) {
    EXPECT_EQ(FailureOfPreparing(link + end),
              "cannot use " + link + " for links: it is a symbolic link");
  }
}

TEST_F(PathSafety, ClientFolderThatIsAFileIsRefused) {
  const std::string file = folder_.Write("file", "");
  EXPECT_EQ(FailureOfPreparing(file), "cannot use " + file + " for links: it is not a folder");
}

}  // namespace
}  // namespace kestrel::relay
