// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_RELAY_RELAY_FIXTURE_H
#define KESTREL_TESTS_RELAY_RELAY_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "relay/unix_sockets.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace kestrel::test {

/// Runs a program that ends by itself, and soon; kills it otherwise.
ProgramResult RunBriefly(const std::vector<std::string>& command,
                         const Environment& environment = {});

/// A relay in a folder of the test's own.
class RelayProcess : public testing::Test {
 protected:
  using Words = std::vector<std::string>;

  ~RelayProcess() override;

  std::string In(const std::string& name) const { return folder_.path() + "/" + name; }
  /// The names of the files in the folder of links.
  Words Links() const;

  /// The command that starts the relay with its paths in the folder.
  Words CommandLine(const Words& options = {}) const;
  /// Starts it, and returns when it serves.
  void Start(const Words& options = {}, const Environment& environment = {});
  void StartCommand(const Words& command, Environment environment = {});
  void Signal(int number) const { relay_->Signal(number); }
  /// Waits until it has told the service manager `state`.
  void AwaitState(const std::string& state);
  /// Waits for the end of the relay, and lets it begin before with SIGTERM.
  ProgramResult Stop();
  ProgramResult Wait();
  /// How many descriptors it has open.
  size_t CountDescriptors() const;

  const TemporaryDirectory folder_;
  const std::string socket_path_ = In("socket");
  const std::string supplicant_path_ = In("supplicant");
  const std::string client_folder_ = In("clients");
  DatagramSocket service_manager_{In("notify")};
  std::unique_ptr<BackgroundProgram> relay_;
};

/// The same beside a supplicant.
class WithSupplicant : public RelayProcess {
 protected:
  void ExpectExchange(const Program& program, const std::string& command,
                      const std::string& reply) {
    program.Send(command);
    supplicant_->Expect(command, reply);
    EXPECT_EQ(program.Receive(), reply);
  }

  /// Until the relay has dealt with all that was sent to it before.
  void AwaitRelay(const Program& program) {
    // It answers this one itself.
    program.Send(std::string(5000, 'x'));
    EXPECT_EQ(program.Receive(), "FAIL\n");
  }

  std::unique_ptr<FakeSupplicant> supplicant_ = std::make_unique<FakeSupplicant>(supplicant_path_);
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_RELAY_RELAY_FIXTURE_H
