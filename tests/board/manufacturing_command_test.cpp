// SPDX-License-Identifier: Apache-2.0
// The device identifier of a board: where it comes from and how it is shown.
#include <nlohmann/json.hpp>

#include "board_command.h"

namespace kestrel::test {
namespace {

using nlohmann::json;

/// What devices of these names have been since there are boards, and must stay.
constexpr char kIdentifierOfBench[] =
    "79F072E5A747AB4B08F786BB9668A8550EB149EAC2AACC0A05363AE68C990D4C"
    "9B85F2A496ADC01A1DF0F76A0B741C18A18B6CE87C9BDBFC7F56A3CDD78E1D92";
constexpr char kIdentifierOfNoName[] =
    "C9C1D54165CED533082D6BED81519FFA66735D56BAF4181C43F7CAA65AB5A0B4"
    "C7A5A173E9780C517A22E3FEEB21BED0C6B06935448FEB91EFCA015793364074";

class ManufacturingCommands : public BoardCommand {
 protected:
  /// The identifier that a board shows which is run with these options.
  std::string IdentifierWith(std::vector<std::string> options) const {
    options.insert(options.begin(), "run");
    options.insert(options.end(), {"--", KESTREL_BOARD_PROGRAM, "show", "--json"});
    const ProgramResult result = Board(options);
    EXPECT_EQ(result.status, 0) << result.standard_error;
    return json::parse(result.standard_output).at("manufacturing").at("device_id");
  }

  /// The exit status of a program that opens `path`, on a board of this configuration.
  int OpenWith(const std::string& configuration, const std::string& path) const {
    const std::string file = files_.Write("b.toml", configuration);
    return Board({"run", "--config", file, "sh", "-c", "exec 3<" + path}).status;
  }

  void ExpectRefused(const std::string& name, const std::string& content,
                     const std::string& reason) {
    const std::string path = files_.Write(name, content);
    ExpectUsageError({"run", "--config", path, "true"}, path + reason);
  }

  const TemporaryDirectory files_;
};

TEST_F(ManufacturingCommands, IdentifierFollowsFromTheName) {
  EXPECT_EQ(IdentifierWith({"--name", "bench"}), kIdentifierOfBench);
  EXPECT_NE(IdentifierWith({"--name", "Bench"}), kIdentifierOfBench);
  Start("bench");
  const json state = json::parse(Board({"show", "--json"}).standard_output);
  EXPECT_EQ(state.at("manufacturing").at("device_id"), kIdentifierOfBench);
}

TEST_F(ManufacturingCommands, BoardsWithoutANameHaveOneIdentifier) {
  EXPECT_EQ(IdentifierWith({}), kIdentifierOfNoName);
  EXPECT_EQ(IdentifierWith({}), kIdentifierOfNoName);
}

TEST_F(ManufacturingCommands, IdentifierCanBeConfigured) {
  const std::string digits = "aB" + std::string(126, '0');
  const std::string file =
      files_.Write("b.json", R"({"manufacturing":{"device-id":")" + digits + "\"}}");
  EXPECT_EQ(IdentifierWith({"--config", file, "--name", "bench"}), "AB" + std::string(126, '0'));
}

TEST_F(ManufacturingCommands, NodesCanBeAbsent) {
  EXPECT_EQ(OpenWith("", "/dev/warden"), 0);
  EXPECT_EQ(OpenWith("", "/dev/lodestone"), 0);
  EXPECT_EQ(OpenWith("[manufacturing]\nwarden = false\n", "/dev/warden"), 2);
  EXPECT_EQ(OpenWith("[manufacturing]\nwarden = false\n", "/dev/lodestone"), 0);
  EXPECT_EQ(OpenWith("[manufacturing]\nlodestone = false\n", "/dev/warden"), 0);
  EXPECT_EQ(OpenWith("[manufacturing]\nlodestone = false\n", "/dev/lodestone"), 2);
}

TEST_F(ManufacturingCommands, ShowTellsIdentifierAndPresence) {
  Start("bench");
  const std::string identifier = std::string("  device id ") + kIdentifierOfBench + "\n";
  EXPECT_NE(Board({"show"}).standard_output.find("manufacturing: /dev/warden, /dev/lodestone\n" +
                                                 identifier),
            std::string::npos);
  const std::string file = files_.Write("b.toml", "[manufacturing]\nlodestone = false\n");
  const ProgramResult run = Board({"run", "--config", file, "--", KESTREL_BOARD_PROGRAM, "show"});
  EXPECT_NE(run.standard_output.find("manufacturing: /dev/warden, /dev/lodestone (absent)\n"),
            std::string::npos);
  const ProgramResult as_json =
      Board({"run", "--config", file, "--", KESTREL_BOARD_PROGRAM, "show", "--json"});
  EXPECT_EQ(json::parse(as_json.standard_output).at("manufacturing").at("nodes"),
            json::parse(R"([{"device": "/dev/warden", "present": true},
                            {"device": "/dev/lodestone", "present": false}])"));
}

TEST_F(ManufacturingCommands, InvalidConfigurationIsRefused) {
  const std::string reason = "an identifier is 128 hexadecimal digits";
  ExpectRefused("short.toml", "\n[manufacturing]\ndevice-id = \"00\"\n",
                ":3: 'manufacturing.device-id': " + reason);
  ExpectRefused("letter.toml", "[manufacturing]\ndevice-id = \"" + std::string(127, '0') + "g\"\n",
                ":2: 'manufacturing.device-id': " + reason);
  ExpectRefused("odd.toml", "[manufacturing]\ndevice-id = \"" + std::string(129, '0') + "\"\n",
                ":2: 'manufacturing.device-id': " + reason);
  ExpectRefused("long.toml", "[manufacturing]\ndevice-id = \"" + std::string(130, '0') + "\"\n",
                ":2: 'manufacturing.device-id': " + reason);
  ExpectRefused("text.toml", "[manufacturing]\nwarden = 1\n",
                ":2: 'manufacturing.warden' must be true or false");
  ExpectRefused("unknown.toml", "[manufacturing]\n\nid = 1\n",
                ":3: unknown key 'manufacturing.id' (known: device-id, lodestone, warden)");
}

}  // namespace
}  // namespace kestrel::test
