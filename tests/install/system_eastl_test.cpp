// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "abi/elf_report.h"
#include "abi/promised_names.h"
#include "install/eastl_prefix.h"
#include "support/run_program.h"

namespace {

namespace fs = std::filesystem;
using kestrel::test::ProgramResult;
using kestrel::test::RunProgram;
using testing::StartsWith;
using testing::UnorderedElementsAre;

using Sources = std::vector<std::string>;

/// What EASTL's headers say is different for: the sources that print into its strings, and one of
/// those that only have containers.
const Sources kWithEastl = {"core/decimal_message.cpp", "core/eastl_support.cpp",
                            "uart/uart_device.cpp",     "wifi/network_commands.cpp",
                            "wifi/scan_results.cpp",    "wifi/stored_listing.cpp"};

/// What is different where EAStdC formats, and one of those that have it format.
const Sources kWithEastdc = {"core/decimal_message.cpp", "core/eastl_support.cpp"};

constexpr char kObjects[] = "src/CMakeFiles/kestrel_objects.dir";

/// Builds the library alone, as somebody with EASTL installed would. Its headers are those of
/// libs/eastl-std here, so nearly all of its objects are those that the build of the tests has; the
/// others ccache knows, where it is used, by paths from the temporary folder.
class SystemEastl : public testing::Test {
 protected:
  void Build(const std::string& where_eastl_is, const Sources& sources) const {
    const ProgramResult configured = RunProgram(
        {CMAKE_PROGRAM, "-G", "Ninja", "-S", KESTREL_SOURCE_DIR, "-B", build_,
         "-DKESTREL_EASTL=system", where_eastl_is, "-DKESTREL_BUILD_TESTS=OFF",
         "-DKESTREL_BUILD_BOARD=OFF", "-DKESTREL_BUILD_RELAY=OFF", "-DKESTREL_BUILD_TOOLS=OFF",
         "-DKESTREL_BUILD_EXAMPLES=OFF", std::string("-DCMAKE_CXX_COMPILER=") + CXX_COMPILER,
         std::string("-DCMAKE_CXX_COMPILER_LAUNCHER=") + CXX_COMPILER_LAUNCHER,
         std::string("-DCMAKE_C_COMPILER=") + C_COMPILER,
         std::string("-DCMAKE_BUILD_TYPE=") + KESTREL_BUILD_TYPE, "-DCMAKE_CXX_FLAGS_DEBUG="});
    ASSERT_EQ(configured.status, 0) << configured.standard_error;
    EXPECT_THAT(configured.standard_output, testing::HasSubstr("Containers: the system's EASTL"));
    TakeObjectsBut(sources);
    BuildSources(sources);
    Link();
  }

  void TakeObjectsBut(const Sources& sources) const {
    for (const char* directory : {kObjects, "libs/libnwl/CMakeFiles/nwl_objects.dir"}) {
      fs::copy(fs::path(KESTREL_BUILD_DIR) / directory, fs::path(build_) / directory,
               fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    }
    for (const std::string& source : sources) {
      fs::remove(fs::path(build_) / kObjects / (source + ".o"));
    }
  }

  void BuildSources(const Sources& sources) const {
    std::vector<std::string> command = {CMAKE_PROGRAM, "--build", build_, "--target"};
    for (const std::string& source : sources) {
      command.push_back(std::string(kObjects) + "/" + source + ".o");
    }
    const ProgramResult built =
        RunProgram(command, {{"CCACHE_BASEDIR", prefix_.parent()}, {"CCACHE_NOHASHDIR", "1"}});
    ASSERT_EQ(built.status, 0) << built.standard_output;
  }

  /// Runs the commands that CMake has for it: Ninja itself would build all objects first.
  void Link() const {
    const ProgramResult linked =
        RunProgram({"sh", "-c",
                    "cd '" + build_ +
                        "' && '" NINJA_PROGRAM "' -t commands lib/libkestrel.so |"
                        " grep -v ' -c ' | sh -e"});
    ASSERT_EQ(linked.status, 0) << linked.standard_error;
  }

  std::string SupportObject() const {
    return build_ + "/" + kObjects + "/core/eastl_support.cpp.o";
  }

  /// Runs a program against what the library adds.
  void ExpectUsableSupport(const std::vector<std::string>& archives,
                           const std::vector<std::string>& options = {}) const {
    const std::string program = build_ + "/eastl_user";
    std::vector<std::string> command = {
        CXX_COMPILER, "-std=c++17", "-I" + prefix_.path() + "/include",
        std::string(KESTREL_SOURCE_DIR) + "/tests/install/eastl_stub/eastl_user.cpp",
        SupportObject()};
    command.insert(command.end(), options.begin(), options.end());
    for (const std::string& archive : archives) {
      command.push_back(prefix_.path() + "/lib/lib" + archive + ".a");
    }
    command.insert(command.end(), {"-o", program});
    kestrel::test::Require(command);
    const ProgramResult result = RunProgram({program});
    EXPECT_EQ(result.status, 0) << result.standard_error;
  }

  /// The names that the support defines, all of which have to be hidden.
  std::set<std::string> HiddenSupport() const {
    std::set<std::string> names;
    for (const kestrel::test::Symbol& symbol : kestrel::test::AllSymbols(SupportObject())) {
      if (symbol.defined && symbol.binding == "GLOBAL") {
        EXPECT_EQ(symbol.visibility, "HIDDEN") << symbol.name;
        names.insert(symbol.name);
      }
    }
    return names;
  }

  std::string Library() const { return build_ + "/lib/libkestrel.so.0"; }

  void ExpectTheUsualExports() const {
    EXPECT_EQ(kestrel::test::Exports(Library()), kestrel::test::Exports(KESTREL_LIBRARY));
    EXPECT_EQ(kestrel::test::Exports(Library()),
              kestrel::test::GlobalNames(KESTREL_SOURCE_DIR "/src/kestrel.map"));
  }

  kestrel::test::EastlPrefix prefix_;
  const std::string build_ = prefix_.parent() + "/build";
};

// The mangled names as far as all machines agree on them.
const auto kOperatorNew = StartsWith("_Zna");
const auto kVsnprintf = StartsWith("_ZN2EA4StdC9Vsnprintf");

TEST_F(SystemEastl, FromEastlRootLinksAndAddsNoExport) {
  prefix_.AddEastl();
  Build("-DEASTL_ROOT=" + prefix_.path(), kWithEastl);
  ExpectTheUsualExports();
  // The sanitizer sees memory that is too small.
  ExpectUsableSupport({"EASTL"}, {"-fsanitize=address"});
  EXPECT_THAT(HiddenSupport(), UnorderedElementsAre(kOperatorNew, kOperatorNew, kVsnprintf));
}

TEST_F(SystemEastl, FromThePrefixPathLinksWithEastdcAndAddsNoExport) {
  prefix_.AddEastl();
  prefix_.AddEastdc();
  Build("-DCMAKE_PREFIX_PATH=" + prefix_.path(), kWithEastdc);
  ExpectTheUsualExports();
  ExpectUsableSupport({"EASTL", "EAStdC"});
  EXPECT_THAT(HiddenSupport(), UnorderedElementsAre(kOperatorNew, kOperatorNew));
}

}  // namespace
