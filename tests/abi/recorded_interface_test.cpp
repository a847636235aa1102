// SPDX-License-Identifier: Apache-2.0
// Programs that were built with an earlier library must run with this one.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::ProgramResult;
using kestrel::test::RunProgram;
using kestrel::test::TemporaryDirectory;

constexpr char kHowToRecord[] = "\nIf that is what you want: ./dev abi records it.\n";

std::string Recorded() {
  std::ostringstream text;
  text << std::ifstream(RECORDED_INTERFACE).rdbuf();
  return text.str();
}

/// What has changed since `recorded`; the status is 0 when nothing has.
ProgramResult ChangesSince(const std::string& recorded) {
  const TemporaryDirectory folder;
  return RunProgram({"abidiff", "--exported-interfaces-only",
                     folder.Write("recorded.abi", recorded), KESTREL_LIBRARY});
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const size_t position = text.find(from);
  EXPECT_NE(position, std::string::npos) << from;
  return text.replace(position, from.size(), to);
}

TEST(RecordedInterface, IsThatOfTheLibrary) {
  const ProgramResult changes = ChangesSince(Recorded());
  EXPECT_EQ(changes.status, 0) << changes.standard_output << changes.standard_error << kHowToRecord;
}

TEST(RecordedInterface, MissesAFunctionThatHasLeft) {
  const std::string more =
      Replaced(Recorded(), "    <elf-symbol name='GPIO_GetValue'",
               "    <elf-symbol name='GPIO_Gone' type='func-type' binding='global-binding' "
               "visibility='default-visibility' is-defined='yes'/>\n"
               "    <elf-symbol name='GPIO_GetValue'");
  const ProgramResult changes = ChangesSince(more);
  EXPECT_NE(changes.status, 0);
  EXPECT_NE(changes.standard_output.find("GPIO_Gone"), std::string::npos);
}

TEST(RecordedInterface, SeesARecordThatHasGrown) {
  const std::string record = "<class-decl name='WifiStoredNetworkRecord'";
  const std::string recorded = Recorded();
  const size_t begin = recorded.find("size-in-bits='", recorded.find(record));
  ASSERT_NE(begin, std::string::npos);
  std::string smaller = recorded;
  smaller.replace(begin, smaller.find('\'', begin + 14) - begin, "size-in-bits='8");
  const ProgramResult changes = ChangesSince(smaller);
  EXPECT_NE(changes.status, 0);
  EXPECT_NE(changes.standard_output.find("WifiStoredNetworkRecord"), std::string::npos);
}

}  // namespace
