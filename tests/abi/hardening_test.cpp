// SPDX-License-Identifier: Apache-2.0
// Whether what is built resists attacks as what ships has to; cmake/KestrelHardening.cmake has how.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "abi/promised_names.h"
#include "support/run_program.h"

namespace {

using kestrel::test::ProgramResult;

void ExpectHardened(const std::vector<std::string>& files) {
  std::vector<std::string> command = {KESTREL_SOURCE_DIR "/scripts/hardening"};
  command.insert(command.end(), files.begin(), files.end());
  const ProgramResult result = kestrel::test::RunProgram(command);
  EXPECT_EQ(result.status, 0) << result.standard_error;
  EXPECT_EQ(result.standard_output,
            "ok: " + std::to_string(files.size()) + " programs and libraries are hardened\n");
}

TEST(Hardening, IsWholeInTheLibrary) { ExpectHardened({KESTREL_LIBRARY}); }

TEST(Hardening, IsWholeInWhatTheBoardPreloads) { ExpectHardened({KESTREL_PRELOAD}); }

#ifdef KESTREL_OPTIMISED
// Without an optimiser no call is fortified.
TEST(Hardening, IsWholeInEveryProgram) {
  std::vector<std::string> programs;
  for (const char* name : {KESTREL_INSTALLED_PROGRAMS}) {
    programs.push_back(BUILT_PROGRAM_FOLDER + std::string("/") + name);
  }
  ExpectHardened(programs);
}
#endif

#if defined __x86_64__ || defined __aarch64__
/// endbr64; bti c or paciasp. Processors that check jumps go on at these instructions alone.
bool IsMark(const void* instruction) {
#ifdef __x86_64__
  return memcmp(instruction, "\xf3\x0f\x1e\xfa", 4) == 0;
#else
  return memcmp(instruction, "\x5f\x24\x03\xd5", 4) == 0 ||
         memcmp(instruction, "\x3f\x23\x03\xd5", 4) == 0;
#endif
}

TEST(Hardening, MarksEveryExportAsAPlaceToJumpTo) {
  const std::unique_ptr<void, int (*)(void*)> library(dlopen(KESTREL_LIBRARY, RTLD_NOW), dlclose);
  ASSERT_NE(library, nullptr) << dlerror();
  const std::set<std::string> exports = kestrel::test::GlobalNames(KESTREL_VERSION_SCRIPT);
  EXPECT_FALSE(exports.empty());
  for (const std::string& name : exports) {
    EXPECT_TRUE(IsMark(dlsym(library.get(), name.c_str()))) << name;
  }
}
#endif

}  // namespace
