// SPDX-License-Identifier: Apache-2.0
// What the programs say when they are asked for help, word by word.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "install/manual_page.h"
#include "support/run_program.h"

namespace {

using kestrel::test::Content;
using kestrel::test::ProgramResult;
using kestrel::test::RunProgram;

class RecordedHelp : public testing::TestWithParam<const char*> {};

// When it is meant to change, scripts/describe_help says how to record it anew.
TEST_P(RecordedHelp, IsWhatTheProgramSays) {
  const ProgramResult help = RunProgram({KESTREL_SOURCE_DIR "/scripts/describe_help", GetParam()});
  EXPECT_EQ(help.status, 0) << help.standard_error;
  const std::string name = std::filesystem::path(GetParam()).filename();
  EXPECT_EQ(help.standard_output,
            Content(KESTREL_SOURCE_DIR "/tests/install/recorded_help/" + name));
}

INSTANTIATE_TEST_SUITE_P(OfEach, RecordedHelp,
                         testing::Values(KESTRELCTL, KESTREL_BOARD, KESTREL_WIFI_RELAY));

}  // namespace
