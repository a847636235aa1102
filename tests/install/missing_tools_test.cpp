// SPDX-License-Identifier: Apache-2.0
// What somebody is told who lacks what a build needs: one line that says what to do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::ProgramResult;
using kestrel::test::RunProgram;
using testing::ContainsRegex;

class MissingTools : public testing::Test {
 protected:
  /// Configures the project with the given options where `path` is searched for programs.
  ProgramResult Configure(const std::vector<std::string>& options, const std::string& path) const {
    std::vector<std::string> command = {CMAKE_PROGRAM,
                                        "-G",
                                        "Ninja",
                                        "-S",
                                        KESTREL_SOURCE_DIR,
                                        "-B",
                                        build_.path(),
                                        std::string("-DCMAKE_MAKE_PROGRAM=") + NINJA_PROGRAM,
                                        "-DKESTREL_BUILD_TESTS=OFF"};
    command.insert(command.end(), options.begin(), options.end());
    return RunProgram(command, {{"PATH", path}, {"CC", ""}, {"CXX", ""}});
  }

  std::string Script(const std::string& name, const std::string& text) const {
    std::string path = build_.path() + "/" + name;
    std::ofstream(path) << "#!/bin/sh\n" << text << '\n';
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  /// A compiler that gives itself out for another version.
  std::string CompilerOfVersion(int major) const {
    return Script("old-compiler", "exec '" CXX_COMPILER "' -w -U__GNUC__ -D__GNUC__=" +
                                      std::to_string(major) + " \"$@\"");
  }

  /// A PATH on which this machine's compilers stand for the target's, which not everybody has who
  /// runs these tests.
  std::string PathWithCrossCompilers() const {
    const std::string options_of_all =
        "for i do shift; case $i in -m*) ;; *) set -- \"$@\" \"$i\" ;; esac; done\n";
    Script("arm-linux-gnueabihf-gcc", options_of_all + "exec '" C_COMPILER "' \"$@\"");
    Script("arm-linux-gnueabihf-g++", options_of_all + "exec '" CXX_COMPILER "' \"$@\"");
    return build_.path() + ":" + getenv("PATH");
  }

  kestrel::test::TemporaryDirectory build_;
};

void ExpectOneLine(const ProgramResult& result, const std::string& regex) {
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.standard_error, ContainsRegex("\n *" + regex + "\n"));
}

TEST_F(MissingTools, NoCompilerIsAnnouncedWithItsPackage) {
  ExpectOneLine(Configure({}, build_.path()),
                "There is no compiler for C: install one \\(on Debian, apt-get install gcc\\), or "
                "name it with -DCMAKE_C_COMPILER=\\.\\.\\.");
  ExpectOneLine(
      Configure({"-DCMAKE_C_COMPILER=" C_COMPILER}, build_.path()),
      "There is no compiler for CXX: install one \\(on Debian, apt-get install g\\+\\+\\), "
      "or name it with -DCMAKE_CXX_COMPILER=\\.\\.\\.");
}

TEST_F(MissingTools, NoCrossCompilerIsAnnouncedWithItsPackage) {
  ExpectOneLine(
      Configure({"-DCMAKE_TOOLCHAIN_FILE=" KESTREL_SOURCE_DIR "/cmake/armhf.cmake"}, build_.path()),
      "There is no arm-linux-gnueabihf-g\\+\\+: install Debian's cross compilers with apt-get "
      "install g\\+\\+-arm-linux-gnueabihf");
}

TEST_F(MissingTools, AnOldCompilerIsAnnouncedWithTheOldestThatWillDo) {
  const std::string compiler = CompilerOfVersion(8);
  ExpectOneLine(
      Configure({"-DCMAKE_CXX_COMPILER=" + compiler, "-DCMAKE_C_COMPILER=" C_COMPILER},
                getenv("PATH")),
      compiler +
          " is of version 8[.0-9]*, and the oldest that will do is 9: install a newer one "
          "\\(on Debian, apt-get install g\\+\\+\\), or name it with "
          "-DCMAKE_CXX_COMPILER=\\.\\.\\.");
}

TEST_F(MissingTools, NoSupplicantLibraryIsAnnouncedWithItsPackageAndTheWayWithout) {
  const std::vector<std::string> options = {"-DCMAKE_IGNORE_PATH=/usr/include",
                                            "-DKESTREL_BUILD_BOARD=OFF", "-DKESTREL_EASTL=std"};
  ExpectOneLine(Configure(options, getenv("PATH")),
                "kestrel-wifi-relay needs libwpa_client: install it \\(on Debian, apt-get install "
                "libwpa-client-dev\\), or leave the relay out with -DKESTREL_BUILD_RELAY=OFF");
}

TEST_F(MissingTools, NoSupplicantLibraryOfTheTargetIsAnnouncedWithTheScriptThatFetchesIt) {
  const std::string root = build_.path() + "/root";
  std::filesystem::create_directory(root);
  const std::string toolchain = KESTREL_SOURCE_DIR "/cmake/armhf.cmake";
  const std::vector<std::string> options = {
      "-DCMAKE_TOOLCHAIN_FILE=" + toolchain, "-DKESTREL_TARGET_ROOT=" + root,
      "-DCMAKE_IGNORE_PATH=/usr/include", "-DKESTREL_BUILD_BOARD=OFF", "-DKESTREL_EASTL=std"};
  ExpectOneLine(
      Configure(options, PathWithCrossCompilers()),
      "kestrel-wifi-relay needs libwpa_client for armhf: fetch it with " KESTREL_SOURCE_DIR
      "/scripts/debian_root " +
          root + " armhf libwpa-client-dev and configure with -DKESTREL_TARGET_ROOT=" + root +
          ", or leave the relay out with -DKESTREL_BUILD_RELAY=OFF");
}

TEST_F(MissingTools, EitherEmulatorOfTheTargetWillDo) {
  for (const char* name : {"qemu-arm-static", "qemu-arm"}) {
    const std::string tools = build_.path() + "/" + name + "-tools";
    std::filesystem::create_directory(tools);
    std::filesystem::create_symlink("/bin/true", tools + "/" + name);
    const ProgramResult found =
        RunProgram({CMAKE_PROGRAM, "-DTOOLS=" + tools, "-P",
                    KESTREL_SOURCE_DIR "/tests/install/emulator_choice.cmake"},
                   {{"PATH", PathWithCrossCompilers()}});
    EXPECT_EQ(found.standard_error, "emulator: " + tools + "/" + name + "\n");
  }
}

TEST_F(MissingTools, AnUnknownPresetIsRefused) {
  const ProgramResult result =
      RunProgram({CMAKE_PROGRAM, "-S", KESTREL_SOURCE_DIR, "--preset", "no-such-preset"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.standard_error,
              ContainsRegex("No such preset in [^\n]*: \"no-such-preset\"\n"));
}

TEST_F(MissingTools, UnknownVerbsAndStagesAreRefusedInOneLine) {
  const ProgramResult verb = RunProgram({KESTREL_SOURCE_DIR "/dev", "deploy"});
  EXPECT_EQ(verb.status, 1);
  EXPECT_EQ(verb.standard_error, "dev: there is no verb 'deploy'; ./dev alone lists them\n");
  const ProgramResult stage = RunProgram({KESTREL_SOURCE_DIR "/dev", "check", "fuss"});
  EXPECT_EQ(stage.status, 1);
  EXPECT_THAT(stage.standard_error,
              testing::MatchesRegex("dev: there is no stage 'fuss' \\(known: [^\n]*\\)\n"));
}

}  // namespace
