// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "abi/elf_report.h"

namespace {

using kestrel::test::DynamicEntries;
using kestrel::test::Imports;
using kestrel::test::ReadElf;

std::vector<std::string> Entries(const char* tag) { return DynamicEntries(tag, KESTREL_LIBRARY); }

std::string ProgramHeader(const std::string& type) {
  const std::string headers = ReadElf("--program-headers", KESTREL_LIBRARY);
  std::smatch match;
  return std::regex_search(headers, match, std::regex("\\n *" + type + " [^\\n]*")) ? match.str()
                                                                                    : std::string();
}

TEST(Library, HasItsSoname) {
  EXPECT_EQ(Entries("SONAME"), std::vector<std::string>{"libkestrel.so.0"});
}

TEST(Library, NeedsTheRuntimesAlone) {
  const std::string sanitizers = *KESTREL_SANITIZE != '\0' ? "|(asan|ubsan|tsan)" : "";
  const std::regex allowed(R"(lib(stdc\+\+|gcc_s|c|m)" + sanitizers +
                           R"()\.so\.[0-9]+|ld-linux.*\.so\.[0-9]+)");
  EXPECT_FALSE(Entries("NEEDED").empty());
  for (const std::string& needed : Entries("NEEDED")) {
    EXPECT_TRUE(std::regex_match(needed, allowed)) << needed;
  }
}

TEST(Library, IsLoadedInPagesAsTheArchitectureHasThem) {
#ifdef __aarch64__
  constexpr char kLargestPage[] = "0x10000";
#else
  constexpr char kLargestPage[] = "0x1000";
#endif
  const std::string headers = ReadElf("--program-headers", KESTREL_LIBRARY);
  const std::regex segment(R"(\n *LOAD [^\n]* (0x[0-9a-f]+)(?=\n))");
  const std::sregex_iterator segments(headers.begin(), headers.end(), segment);
  EXPECT_GE(std::distance(segments, {}), 2);
  for (auto match = segments; match != std::sregex_iterator(); ++match) {
    EXPECT_EQ((*match)[1], kLargestPage);
  }
}

TEST(Library, IsReadOnlyAfterRelocation) { EXPECT_NE(ProgramHeader("GNU_RELRO"), ""); }

TEST(Library, BindsAllSymbolsWhenItIsLoaded) {
  EXPECT_EQ(Entries("FLAGS"), std::vector<std::string>{"BIND_NOW"});
  ASSERT_EQ(Entries("FLAGS_1").size(), 1u);
  EXPECT_NE(Entries("FLAGS_1").front().find("NOW"), std::string::npos);
}

TEST(Library, HasNoExecutableStack) {
  const std::string stack = ProgramHeader("GNU_STACK");
  EXPECT_TRUE(std::regex_search(stack, std::regex(" RW +0x"))) << stack;
}

TEST(Library, CanBeUnloaded) {
  ASSERT_EQ(Entries("FLAGS_1").size(), 1u);
  EXPECT_EQ(Entries("FLAGS_1").front().find("NODELETE"), std::string::npos);
}

TEST(Library, HasNoSearchPath) {
  EXPECT_TRUE(Entries("RPATH").empty());
  EXPECT_TRUE(Entries("RUNPATH").empty());
}

TEST(Library, RelocatesNoCode) { EXPECT_TRUE(Entries("TEXTREL").empty()); }

TEST(Library, ProtectsItsStack) {
  EXPECT_EQ(Imports(KESTREL_LIBRARY).count("__stack_chk_fail"), 1u);
}

TEST(Library, LetsOneThreadRegisterASingletonsDestruction) {
  const std::set<std::string> imports = Imports(KESTREL_LIBRARY);
  for (const char* name : {"__cxa_guard_acquire", "__cxa_guard_release"}) {
    EXPECT_EQ(imports.count(name), 1u) << name;
  }
}

TEST(Library, HasSingletonsWhoseConstructionNeverFails) {
  // What would undo a construction that fails.
  EXPECT_EQ(Imports(KESTREL_LIBRARY).count("__cxa_guard_abort"), 0u);
}

TEST(Library, CallsNoFortifiedVariants) {
  for (const std::string& name : Imports(KESTREL_LIBRARY)) {
    EXPECT_FALSE(std::regex_search(name, std::regex("_chk$"))) << name;
  }
}

TEST(Library, MakesSystemCallsUnderTheirPlainNames) {
  const std::set<std::string> imports = Imports(KESTREL_LIBRARY);
  for (const char* name : {"open", "ioctl", "close", "socket", "connect", "writev", "setsockopt",
                           "read", "clock_gettime"}) {
    EXPECT_EQ(imports.count(name), 1u) << name;
  }
  // Shared pointers ask __libc_single_threaded whether they may count without atomics.
  const std::regex other_names(
      "64$|^__libc_(?!single_threaded$)"
      "|^__(open|ioctl|close|socket|connect|writev|setsockopt|read|clock_gettime)");
  for (const std::string& name : imports) {
    EXPECT_FALSE(std::regex_search(name, other_names)) << name;
  }
}

}  // namespace
