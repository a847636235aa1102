// SPDX-License-Identifier: Apache-2.0
#include "relay/relay_fixture.h"

#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace kestrel::test {

namespace fs = std::filesystem;

namespace {

/// What a relay gets to end in a test that has failed already.
constexpr std::chrono::milliseconds kShortestEnd{2000};

}  // namespace

ProgramResult RunBriefly(const std::vector<std::string>& command, const Environment& environment) {
  return BackgroundProgram(command, environment).Wait(kPatience);
}

RelayProcess::~RelayProcess() {
  if (relay_ != nullptr) {
    EXPECT_EQ(Stop().status, 0);
  }
}

RelayProcess::Words RelayProcess::Links() const {
  Words names;
  for (const fs::directory_entry& entry : fs::directory_iterator(client_folder_)) {
    names.push_back(entry.path().filename());
  }
  return names;
}

RelayProcess::Words RelayProcess::CommandLine(const Words& options) const {
  Words command = {KESTREL_WIFI_RELAY, "--socket",     socket_path_,  "--supplicant",
                   supplicant_path_,   "--client-dir", client_folder_};
  command.insert(command.end(), options.begin(), options.end());
  return command;
}

void RelayProcess::Start(const Words& options, const Environment& environment) {
  StartCommand(CommandLine(options), environment);
}

void RelayProcess::StartCommand(const Words& command, Environment environment) {
  environment.emplace("NOTIFY_SOCKET", In("notify"));
  environment.emplace("JOURNAL_STREAM", "");
  relay_ = std::make_unique<BackgroundProgram>(command, environment);
  AwaitState("READY=1");
}

void RelayProcess::AwaitState(const std::string& state) {
  const std::optional<Command> told = service_manager_.Receive();
  ASSERT_TRUE(told.has_value()) << "the relay did not tell " << state;
  EXPECT_EQ(told->text, state);
}

ProgramResult RelayProcess::Wait() {
  ProgramResult result = relay_->Wait(std::max(Patience(), kShortestEnd));
  relay_.reset();
  return result;
}

ProgramResult RelayProcess::Stop() {
  Signal(SIGTERM);
  return Wait();
}

size_t RelayProcess::CountDescriptors() const {
  const fs::directory_iterator open("/proc/" + std::to_string(relay_->pid()) + "/fd");
  return static_cast<size_t>(std::distance(fs::begin(open), fs::end(open)));
}

}  // namespace kestrel::test
