// SPDX-License-Identifier: Apache-2.0
// --config: what a board is like.
#include "board_command.h"

namespace kestrel::test {
namespace {

class ConfigOption : public BoardCommand {
 protected:
  ProgramResult RunWith(const std::string& name, const std::string& content) {
    return Board({"run", "--config", files_.Write(name, content), kProbe});
  }
  void ExpectRefused(const std::string& name, const std::string& content,
                     const std::string& reason) {
    const std::string path = files_.Write(name, content);
    ExpectUsageError({"run", "--config", path, kProbe}, path + reason);
  }

  const TemporaryDirectory files_;
};

TEST_F(ConfigOption, TomlAndJsonDescribeTheSameBoard) {
  EXPECT_EQ(RunWith("b.toml", "[gpio]\nlines = 4\n").standard_output, "errno 19\n");
  EXPECT_EQ(RunWith("b.json", R"({"gpio": {"lines": 4}})").standard_output, "errno 19\n");
  EXPECT_EQ(RunWith("b.toml", "[gpio]\nlines = 5\n").standard_output, "level 1\n");
  EXPECT_EQ(RunWith("b.json", R"({"gpio": {"lines": 5}})").standard_output, "level 1\n");
  EXPECT_EQ(RunWith("empty.toml", "").standard_output, "level 1\n");
  EXPECT_EQ(RunWith("empty.json", "{}").standard_output, "level 1\n");
}

TEST_F(ConfigOption, AbsentChipIsEnoent) {
  EXPECT_EQ(RunWith("b.toml", "[gpio]\npresent = false\n").standard_output, "errno 2\n");
  Start("bench", {"--config", files_.path() + "/b.toml"});
  EXPECT_NE(Board({"show"}).standard_output.find("32 lines, absent\n"), std::string::npos);
}

TEST_F(ConfigOption, ReplacedChipIsNoGpioDevice) {
  const ProgramResult result = RunWith("b.toml", "[gpio]\nreplaced-by = \"/dev/null\"\n");
  EXPECT_EQ(result.standard_output, "errno 25\n");
  Start("bench", {"--config", files_.path() + "/b.toml"});
  EXPECT_EQ(
      Board({"show"}).standard_output.rfind(
          "board: bench\ngpio: /dev/gpiochip0, label \"kestrel-board\", 32 lines, replaced by "
          "/dev/null\n  32 idle inputs, low\n",
          0),
      0U);
  EXPECT_EQ(result.standard_error,
            "[Kestrel:GPIO] Problem getting GPIO info: Inappropriate ioctl for device (25)\n");
}

TEST_F(ConfigOption, FaultsMayStandInTheFile) {
  EXPECT_EQ(RunWith("b.toml", "faults = [\"open=EACCES\"]\n").standard_output, "errno 13\n");
}

TEST_F(ConfigOption, InvalidFilesAreRefusedWithFileLineAndReason) {
  ExpectRefused("a.toml", "[gpio]\nlabel = \"x\"\nlines = \"many\"\n",
                ":3: 'gpio.lines' must be a whole number from 1 to 512");
  ExpectRefused("b.toml", "[gpio]\n\nlines = 0\n",
                ":3: 'gpio.lines' must be a whole number from 1 to 512");
  ExpectRefused("c.toml", "[gipo]\nlines = 1\n",
                ":1: unknown key 'gipo' (known: faults, gpio, manufacturing, network, uart, wifi)");
  ExpectRefused("d.toml", "[gpio]\nline = 3\n", ":2: 'gpio.line' must be an array of tables");
  ExpectRefused("e.toml", "[[gpio.line]]\nname = \"x\"\n", ":1: 'gpio.line.offset' is missing");
  ExpectRefused("f.toml", "[[gpio.line]]\noffset = 3\npull = \"sideways\"\n",
                ":3: 'gpio.line.pull' must be one of: none, up, down");
  ExpectRefused("g.toml", "[[gpio.line]]\noffset = 3\n[[gpio.line]]\noffset = 3\n",
                ":4: 'gpio.line.offset': line 3 is described twice");
  ExpectRefused("h.toml", "faults = [\n\"open=EIO\",\n\"open=EFOO\"]\n",
                ":3: fault 'open=EFOO': no errno is called 'EFOO' (such as EIO or ENODEV)");
  ExpectRefused("k.toml", "[gpio]\nreplaced-by = \"" + std::string(5000, 'x') + "\"\n",
                ":2: 'gpio.replaced-by' must be a text of at most 4095 bytes");
  ExpectRefused("l.toml", "\"a\\nb\" = 1\n",
                ":1: unknown key 'a b' (known: faults, gpio, manufacturing, network, uart, wifi)");
  ExpectRefused("i.json", "{\n \"gpio\": {\n  \"lines\": 0\n }\n}\n",
                ":3: 'gpio.lines' must be a whole number from 1 to 512");
  ExpectRefused("j.json", "[]", ":1: the file must be a table");
}

TEST_F(ConfigOption, EachOfManyLinesHasItsNumber) {
  const std::string file = files_.Write("b.toml", "[gpio]\nlines = 300\n");
  const std::string drive = KESTREL_BOARD_PROGRAM " line 299 high >&2; " KESTREL_BOARD_PROGRAM;
  const std::string shown =
      Board({"run", "--config", file, "sh", "-c", drive + " show"}).standard_output;
  EXPECT_NE(shown.find("\n  line 299  high  "), std::string::npos) << shown;
}

TEST_F(ConfigOption, UnparsableFilesAreRefusedWithFileAndLine) {
  const std::string toml = files_.Write("x.toml", "[gpio]\nlines 3\n");
  const ProgramResult bad_toml = Board({"run", "--config", toml, "true"});
  EXPECT_EQ(bad_toml.status, 2);
  EXPECT_EQ(bad_toml.standard_error.rfind("kestrel-board: " + toml + ":2: ", 0), 0U)
      << bad_toml.standard_error;
  const std::string json = files_.Write("x.json", "{\n\"gpio\": }\n");
  const ProgramResult bad_json = Board({"run", "--config", json, "true"});
  EXPECT_EQ(bad_json.status, 2);
  EXPECT_EQ(bad_json.standard_error.rfind("kestrel-board: " + json + ":2: ", 0), 0U)
      << bad_json.standard_error;
}

TEST_F(ConfigOption, UnreadableFilesAreRefused) {
  ExpectUsageError({"run", "--config", "/nowhere/x.toml", "true"},
                   "/nowhere/x.toml: No such file or directory");
  ExpectUsageError({"run", "--config", "", "true"},
                   ": a configuration file is named *.toml or *.json");
  ExpectUsageError({"run", "--config", "/etc/passwd", "true"},
                   "/etc/passwd: a configuration file is named *.toml or *.json");
}

}  // namespace
}  // namespace kestrel::test
