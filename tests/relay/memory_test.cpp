// SPDX-License-Identifier: Apache-2.0
// No passphrase stays in the memory of the relay, whatever becomes of the command that it was in.
#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <vector>

#include "relay/relay_fixture.h"

namespace kestrel::test {
namespace {

/// Part of each passphrase of these tests, and of nothing else.
constexpr char kSecret[] = "uNsAyAbLe";

/// Sanitizers set aside terabytes that nobody can read through.
constexpr uint64_t kLargestRegion = uint64_t{100} << 20;

/// Text of this length that is a secret wherever it is cut.
std::string Secret(size_t length) {
  std::string text;
  while (text.size() < length) {
    text += kSecret;
  }
  return text.substr(0, length);
}

struct Region {
  uint64_t begin = 0;
  uint64_t end = 0;
};

std::vector<Region> WritableRegions(pid_t process) {
  std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
  std::vector<Region> regions;
  for (std::string line; std::getline(maps, line);) {
    Region region;
    char dash = 0;
    std::string rights;
    std::istringstream(line) >> std::hex >> region.begin >> dash >> region.end >> rights;
    if (rights.substr(0, 2) == "rw" && region.end - region.begin <= kLargestRegion) {
      regions.push_back(region);
    }
  }
  return regions;
}

std::string ContentOf(const Region& region, std::ifstream& memory) {
  std::string content(static_cast<size_t>(region.end - region.begin), '\0');
  memory.seekg(static_cast<std::streamoff>(region.begin));
  memory.read(content.data(), static_cast<std::streamsize>(content.size()));
  EXPECT_TRUE(memory.good()) << "the memory of a child can be read";
  return content;
}

class RelayMemory : public WithSupplicant {
 protected:
  /// How often the secret is found in the memory of the relay.
  size_t CountSecrets() const {
    std::ifstream memory("/proc/" + std::to_string(relay_->pid()) + "/mem", std::ios::binary);
    size_t count = 0;
    for (const Region& region : WritableRegions(relay_->pid())) {
      const std::string content = ContentOf(region, memory);
      for (size_t at = content.find(kSecret); at != std::string::npos;
           at = content.find(kSecret, at + 1)) {
        ++count;
      }
    }
    return count;
  }

  /// As the library sets a passphrase.
  static std::string PskCommand() { return "SET_NETWORK 0 psk \"" + Secret(63) + '"'; }

  /// As long as a command may be.
  static std::string LongestCommand() { return "SET_NETWORK 0 psk " + Secret(4096 - 18); }
};

/// How many calls and addresses of all libraries are bound before the relay begins.
int BoundAtTheStart(Environment environment) {
  environment["LD_DEBUG"] = "statistics";
  const ProgramResult result = RunProgram({KESTREL_WIFI_RELAY, "--version"}, environment);
  EXPECT_EQ(result.status, 0);
  const std::string text = "  number of relocations: ";
  const size_t last = result.standard_error.rfind(text);
  EXPECT_NE(last, std::string::npos) << result.standard_error;
  return last == std::string::npos ? 0
                                   : std::stoi(result.standard_error.substr(last + text.size()));
}

// A call that is bound later leaves parts of what was copied last on the stack.
TEST(RelayLoading, BindsAllCallsOfAllLibrariesAtTheStart) {
  const int all = BoundAtTheStart({{"LD_BIND_NOW", "1"}});
  EXPECT_GT(all, 0);
  EXPECT_EQ(BoundAtTheStart({{"LD_BIND_NOW", ""}}), all);
}

TEST(RelayLoading, GoesOnUnderANameThatCannotBeStarted) {
  const TemporaryDirectory folder;
  // A shell would run it, the kernel does not.
  const std::string script = folder.Write("script", "echo from a shell\n");
  ASSERT_EQ(chmod(script.c_str(), 0755), 0);
  for (const std::string& name : {script, folder.path() + "/missing", std::string("missing")}) {
    const ProgramResult result =
        RunProgram({"bash", "-c", "exec -a '" + name + "' " KESTREL_WIFI_RELAY " --version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standard_output, "kestrel-wifi-relay " KESTREL_VERSION "\n");
    EXPECT_EQ(result.standard_error, "");
  }
}

TEST_F(RelayMemory, HasThePassphraseWhileItWaitsForTheSupplicantAndNoLonger) {
  Start({"--timeout", "1"});
  const Program program(socket_path_);
  const Program other(socket_path_);
  supplicant_->Fill();
  program.Send(PskCommand());
  AwaitRelay(other);
  // So this search finds what is there.
  EXPECT_GT(CountSecrets(), 0U);
  EXPECT_EQ(program.Receive(), "FAIL\n");
  EXPECT_EQ(CountSecrets(), 0U);
}

TEST_F(RelayMemory, HasNoPassphraseThatTheSupplicantHas) {
  Start();
  const Program program(socket_path_);
  ExpectExchange(program, PskCommand(), "OK\n");
  EXPECT_EQ(CountSecrets(), 0U);
}

TEST_F(RelayMemory, HasNothingOfALongCommandThatTheSupplicantHas) {
  Start({"--allow-all", "--verbose"});
  const Program program(socket_path_);
  ExpectExchange(program, LongestCommand(), "OK\n");
  EXPECT_EQ(CountSecrets(), 0U);
  // Not even where the passphrase stands in the place of a name.
  ExpectExchange(program, Secret(4096), "OK\n");
  EXPECT_EQ(CountSecrets(), 0U);
}

TEST_F(RelayMemory, HasNothingOfACommandThatIsTooLong) {
  Start();
  const Program program(socket_path_);
  for (const size_t length : {4097U, 5000U, 20000U}) {
    program.SendBytes(Secret(length));
    EXPECT_EQ(program.Receive(), "FAIL\n");
    EXPECT_EQ(CountSecrets(), 0U) << length;
  }
}

TEST_F(RelayMemory, HasNothingOfACommandThatIsRefused) {
  Start();
  const Program program(socket_path_);
  for (const std::string& command : {LongestCommand(), Secret(4096)}) {
    program.Send(command);
    EXPECT_EQ(program.Receive(), "FAIL\n");
    EXPECT_EQ(CountSecrets(), 0U);
  }
}

TEST_F(RelayMemory, HasNoPassphraseWhenThereIsNoSupplicant) {
  supplicant_.reset();
  Start({"--verbose"});
  const Program program(socket_path_);
  program.Send(PskCommand());
  EXPECT_EQ(program.Receive(), "FAIL\n");
  EXPECT_EQ(CountSecrets(), 0U);
}

TEST_F(RelayMemory, HasNoPassphraseOfAProgramThatLeftBeforeTheSupplicantHadIt) {
  Start({"--allow-all", "--timeout", "3600"});
  Program program(socket_path_);
  const Program other(socket_path_);
  supplicant_->Fill();
  program.Send(LongestCommand());
  AwaitRelay(other);
  EXPECT_GT(CountSecrets(), 0U);
  program.Leave();
  AwaitRelay(other);
  EXPECT_EQ(CountSecrets(), 0U);
}

}  // namespace
}  // namespace kestrel::test
