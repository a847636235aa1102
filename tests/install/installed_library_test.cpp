// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "abi/elf_report.h"
#include "install/eastl_prefix.h"
#include "install/manual_page.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

namespace fs = std::filesystem;
using kestrel::test::Content;
using kestrel::test::ProgramResult;
using kestrel::test::Require;
using kestrel::test::RunProgram;

std::set<std::string> FilesIn(const fs::path& directory) {
  std::set<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

std::set<std::string> AllFilesIn(const fs::path& directory) {
  std::set<std::string> names;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory)) {
    names.insert(entry.path().lexically_relative(directory).string());
  }
  return names;
}

class InstalledLibrary : public testing::Test {
 protected:
  void SetUp() override {
    Require({CMAKE_PROGRAM, "--install", KESTREL_BUILD_DIR, "--prefix", prefix_.path()});
  }

  fs::path Prefix() const { return prefix_.path(); }
  fs::path LibraryDirectory() const { return Prefix() / KESTREL_LIBDIR; }

  /// Runs a program and expects the one line that it logs.
  void ExpectThatItLogs(const std::string& program, const std::string& text) const {
    const ProgramResult result =
        RunProgram({program}, {{"LD_LIBRARY_PATH", LibraryDirectory().string()}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standard_error, text);
  }

  /// Compiles with the flags that pkg-config gives for the prefix, and nothing else.
  std::string BuildWithPkgConfig(const std::string& compiler, const std::string& source) const {
    std::string program = work_.path() + "/application";
    Require({"sh", "-c",
             "flags=$(PKG_CONFIG_PATH='" + (LibraryDirectory() / "pkgconfig").string() +
                 "' pkg-config --cflags --libs kestrel) && " + compiler +
                 " '" KESTREL_SOURCE_DIR "/tests/install/application/" + source + "' $flags -o '" +
                 program + "'"});
    return program;
  }

  kestrel::test::TemporaryDirectory prefix_;
  kestrel::test::TemporaryDirectory work_;
};

TEST_F(InstalledLibrary, HasEveryPublicHeaderAndNoOther) {
  EXPECT_EQ(FilesIn(Prefix() / "include"), std::set<std::string>{"kestrel"});
  EXPECT_EQ(FilesIn(Prefix() / "include/kestrel"),
            FilesIn(KESTREL_SOURCE_DIR "/inc/public/kestrel"));
}

TEST_F(InstalledLibrary, IsReachedThroughItsLinks) {
  const fs::path real = fs::canonical(LibraryDirectory() / "libkestrel.so.0");
  EXPECT_EQ(fs::read_symlink(LibraryDirectory() / "libkestrel.so"), "libkestrel.so.0");
  EXPECT_EQ(fs::canonical(LibraryDirectory() / "libkestrel.so"), real);
  EXPECT_TRUE(fs::is_regular_file(real));
}

TEST_F(InstalledLibrary, ComesWithTheToolsTheirCompletionAndManualPages) {
  EXPECT_EQ(FilesIn(Prefix() / "bin"), (std::set<std::string>{"kestrel-board", "kestrelctl"}));
  EXPECT_TRUE(fs::is_regular_file(LibraryDirectory() / "kestrel-board/preload.so"));
  EXPECT_TRUE(fs::is_regular_file(Prefix() / "share/bash-completion/completions/kestrelctl"));
  for (const char* section : {"man1", "man3", "man7", "man8"}) {
    EXPECT_EQ(FilesIn(Prefix() / "share/man" / section),
              FilesIn(fs::path(KESTREL_SOURCE_DIR "/man") / section));
  }
}

TEST_F(InstalledLibrary, ComesWithTheLicencesOfWhatIsCompiledIn) {
  EXPECT_EQ(FilesIn(Prefix() / "share/doc/kestrel"),
            (std::set<std::string>{"LICENSE", "THIRD_PARTY_NOTICES"}));
  const std::string notices = Content(Prefix() / "share/doc/kestrel/THIRD_PARTY_NOTICES");
  for (const char* source : {"cli11", "nlohmann-json3", "tomlplusplus", "wpa"}) {
    EXPECT_NE(notices.find(" | " + std::string(source) + " "), std::string::npos) << source;
  }
  for (const char* words : {"University of Cincinnati", "Niels Lohmann", "Mark Gillard",
                            "Jouni Malinen", "Redistributions in binary form",
                            "The above copyright notice and this permission notice"}) {
    EXPECT_NE(notices.find(words), std::string::npos) << words;
  }
}

TEST_F(InstalledLibrary, HasABoardThatFindsWhatItPreloads) {
  const ProgramResult result =
      RunProgram({Prefix() / "bin/kestrel-board", "run", "--", Prefix() / "bin/kestrelctl", "gpio",
                  "get", "4"},
                 {{"LD_LIBRARY_PATH", ""}, {"KESTREL_BOARD_DIR", work_.path()}});
  EXPECT_EQ(result.standard_output, "4=low\n") << result.standard_error;
}

void ExpectThatItRuns(const std::string& program) {
  const ProgramResult result = RunProgram({program, "--version"}, {{"LD_LIBRARY_PATH", ""}});
  EXPECT_EQ(result.status, 0) << result.standard_error;
}

TEST_F(InstalledLibrary, IsFoundByItsProgramsWhereverThePrefixIs) {
  ExpectThatItRuns(Prefix() / "bin/kestrelctl");
  fs::rename(Prefix(), work_.path() + "/moved");
  ExpectThatItRuns(work_.path() + "/moved/bin/kestrelctl");
}

TEST_F(InstalledLibrary, IsTheSumOfItsComponents) {
  for (const char* component : {"Runtime", "Development", "Tools", "Board", "Relay", "Licences"}) {
    Require({CMAKE_PROGRAM, "--install", KESTREL_BUILD_DIR, "--prefix", work_.path(), "--component",
             component});
  }
  EXPECT_EQ(AllFilesIn(work_.path()), AllFilesIn(Prefix()));
}

/// The search paths of all installed programs and libraries that have one.
std::map<std::string, std::vector<std::string>> SearchPaths(const fs::path& prefix) {
  std::map<std::string, std::vector<std::string>> paths;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(prefix)) {
    const std::string folder = entry.path().parent_path().filename().string();
    const bool is_elf = folder == "bin" || folder == "sbin" ||
                        entry.path().filename().string().find(".so") != std::string::npos;
    if (!is_elf || !entry.is_regular_file()) {
      continue;
    }
    for (const char* tag : {"RPATH", "RUNPATH"}) {
      for (const std::string& path : kestrel::test::DynamicEntries(tag, entry.path())) {
        paths[entry.path().filename().string()].push_back(path);
      }
    }
  }
  return paths;
}

TEST_F(InstalledLibrary, IsSearchedForRelativeToTheProgramAndNothingElseIs) {
  const std::map<std::string, std::vector<std::string>> expected = {
      {"kestrelctl", {"$ORIGIN/../" KESTREL_LIBDIR}}};
  EXPECT_EQ(SearchPaths(Prefix()), expected);
}

TEST_F(InstalledLibrary, BuildsACProgramThroughPkgConfig) {
  ExpectThatItLogs(BuildWithPkgConfig(C_COMPILER, "application.c"), "from C 11\n");
}

TEST_F(InstalledLibrary, BuildsACxxProgramThroughPkgConfig) {
  ExpectThatItLogs(BuildWithPkgConfig(CXX_COMPILER, "application.cpp"), "from C++ 11\n");
}

TEST_F(InstalledLibrary, BuildsProgramsThroughTheCMakePackage) {
  Require({CMAKE_PROGRAM, "-G", "Ninja", "-S",
           std::string(KESTREL_SOURCE_DIR) + "/tests/install/application", "-B", work_.path(),
           "-DCMAKE_PREFIX_PATH=" + prefix_.path(), std::string("-DCMAKE_C_COMPILER=") + C_COMPILER,
           std::string("-DCMAKE_CXX_COMPILER=") + CXX_COMPILER});
  Require({CMAKE_PROGRAM, "--build", work_.path()});
  ExpectThatItLogs(work_.path() + "/application_c", "from C 11\n");
  ExpectThatItLogs(work_.path() + "/application_cpp", "from C++ 11\n");
}

TEST_F(InstalledLibrary, CanBeMoved) {
  const fs::path moved = work_.path() + "/moved";
  fs::rename(Prefix(), moved);
  const ProgramResult flags =
      RunProgram({"pkg-config", "--cflags", "kestrel"},
                 {{"PKG_CONFIG_PATH", (moved / KESTREL_LIBDIR / "pkgconfig").string()}});
  ASSERT_EQ(flags.standard_output.substr(0, 2), "-I");
  const std::string include = flags.standard_output.substr(2, flags.standard_output.find(' ') - 2);
  EXPECT_TRUE(fs::equivalent(include, moved / "include"));
}

}  // namespace
