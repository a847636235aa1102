// SPDX-License-Identifier: Apache-2.0
// How the relay starts, whom it lets in, what it says, and how it ends.
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

#include "relay/relay_fixture.h"

namespace kestrel::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

class RelayService : public WithSupplicant {
 protected:
  std::string ListeningLine() const {
    return "listening at " + socket_path_ + " for the supplicant at " + supplicant_path_ + "\n";
  }

  ProgramResult RunAnother() const {
    return RunBriefly(CommandLine(), {{"NOTIFY_SOCKET", ""}, {"JOURNAL_STREAM", ""}});
  }

  void ExpectFailure(const std::string& line) const {
    const ProgramResult result = RunAnother();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standard_output, "");
    EXPECT_EQ(result.standard_error, "kestrel-wifi-relay: " + line + "\n");
  }

  /// Starts the relay by a line of a shell in which "$@" is its command.
  void StartByShell(const std::string& line, const Words& options = {}) {
    Words command = {"bash", "-c", line, "bash"};
    const Words relay = CommandLine(options);
    command.insert(command.end(), relay.begin(), relay.end());
    StartCommand(command);
  }

  void Kill() {
    Signal(SIGKILL);
    EXPECT_EQ(Wait().status, 128 + SIGKILL);
  }
};

std::string ContentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path).rdbuf();
  return content.str();
}

mode_t ModeOf(const std::string& path) {
  struct stat file {};
  EXPECT_EQ(lstat(path.c_str(), &file), 0) << path;
  return file.st_mode & 07777;
}

TEST_F(RelayService, LeavesNothingBehindWhenItIsToldToEnd) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    Start();
    EXPECT_EQ(ContentOf(socket_path_ + ".lock"), std::to_string(relay_->pid()));
    const Program idle(socket_path_);
    ExpectExchange(idle, "STATUS", "OK\n");
    const Program waiting(socket_path_);
    waiting.Send("SCAN");
    ASSERT_TRUE(supplicant_->Receive().has_value());
    EXPECT_THAT(Links(), SizeIs(2));
    Signal(signal);
    EXPECT_TRUE(idle.SeesTheEnd());
    EXPECT_TRUE(waiting.SeesTheEnd());
    const ProgramResult result = Wait();
    AwaitState("STOPPING=1");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standard_output, "");
    EXPECT_EQ(result.standard_error,
              "kestrel-wifi-relay: " + ListeningLine() + "kestrel-wifi-relay: stopping\n");
    EXPECT_THAT(Links(), IsEmpty());
    EXPECT_FALSE(fs::exists(socket_path_));
    EXPECT_FALSE(fs::exists(socket_path_ + ".lock"));
  }
}

TEST_F(RelayService, SocketIsForItsUserAndGroupUnlessSaidOtherwise) {
  Start();
  EXPECT_EQ(ModeOf(socket_path_), 0660U);
}

TEST_F(RelayService, SocketHasTheModeThatIsGivenWhateverTheUmask) {
  StartByShell("umask 077; exec \"$@\"", {"--mode", "0606"});
  EXPECT_EQ(ModeOf(socket_path_), 0606U);
  EXPECT_EQ(Stop().status, 0);
  AwaitState("STOPPING=1");
  StartByShell("umask 000; exec \"$@\"", {"--mode", "700"});
  EXPECT_EQ(ModeOf(socket_path_), 0700U);
}

TEST_F(RelayService, RunsOnceForASocket) {
  Start();
  const Program program(socket_path_);
  const pid_t first = relay_->pid();
  ExpectFailure(socket_path_ + ": a relay serves it already, process " + std::to_string(first));
  ExpectExchange(program, "STATUS", "OK\n");
  const Program another(socket_path_);
  ExpectExchange(another, "STATUS", "OK\n");
}

TEST_F(RelayService, TwoSocketsHaveARelayEach) {
  Start();
  const Program program(socket_path_);
  ExpectExchange(program, "STATUS", "1");
  // In the same folder of links.
  BackgroundProgram second({KESTREL_WIFI_RELAY, "--socket", In("second"), "--supplicant",
                            supplicant_path_, "--client-dir", client_folder_},
                           {{"NOTIFY_SOCKET", In("notify")}, {"JOURNAL_STREAM", ""}});
  AwaitState("READY=1");
  const Program other(In("second"));
  ExpectExchange(other, "STATUS", "2");
  ExpectExchange(program, "STATUS", "3");
  second.Signal(SIGTERM);
  EXPECT_EQ(second.Wait(kPatience).status, 0);
  AwaitState("STOPPING=1");
}

TEST_F(RelayService, MakesAFolderOfLinksThatTheSupplicantCanReach) {
  umask(0022);
  const BackgroundProgram second({KESTREL_WIFI_RELAY, "--socket", In("second"), "--supplicant",
                                  supplicant_path_, "--client-dir", In("links")},
                                 {{"NOTIFY_SOCKET", In("notify")}, {"JOURNAL_STREAM", ""}});
  AwaitState("READY=1");
  EXPECT_EQ(fs::status(In("links")).permissions(), fs::perms(0755));
}

TEST_F(RelayService, TakesThePlaceOfOneThatWasKilled) {
  Start();
  const Program program(socket_path_);
  ExpectExchange(program, "STATUS", "OK\n");
  Kill();
  // A number of more digits than any process has.
  folder_.Write("socket.lock", "12345678901");
  EXPECT_THAT(Links(), SizeIs(1));
  EXPECT_TRUE(fs::exists(socket_path_));
  const DatagramSocket living(client_folder_ + "/wpa_ctrl_1-1");
  const Words others = {"other", "wpa_ctrl_1", "wpa_ctrl_x-1"};
  for (const std::string& name : others) {
    DatagramSocket(client_folder_ + "/" + name).Vanish();
  }
  std::ofstream(client_folder_ + "/wpa_ctrl_7-7") << "no socket";
  Start();
  EXPECT_EQ(ContentOf(socket_path_ + ".lock"), std::to_string(relay_->pid()));
  EXPECT_THAT(Links(), testing::UnorderedElementsAre("wpa_ctrl_1-1", "other", "wpa_ctrl_1",
                                                     "wpa_ctrl_x-1", "wpa_ctrl_7-7"));
  const Program another(socket_path_);
  ExpectExchange(another, "STATUS", "OK\n");
  EXPECT_THAT(Stop().standard_error, StartsWith("kestrel-wifi-relay: removed 1 dead socket from " +
                                                client_folder_ + "\n"));
}

TEST_F(RelayService, CountsTheDeadSocketsThatItRemoves) {
  fs::create_directory(client_folder_);
  for (const char* const name : {"/wpa_ctrl_1-1", "/wpa_ctrl_2-1", "/wpa_ctrl_2-10"}) {
    DatagramSocket(client_folder_ + name).Vanish();
  }
  Start();
  EXPECT_THAT(Links(), IsEmpty());
  EXPECT_THAT(Stop().standard_error, StartsWith("kestrel-wifi-relay: removed 3 dead sockets from " +
                                                client_folder_ + "\n"));
}

TEST_F(RelayService, ServiceManagerThatIsBusyDoesNotHoldItUp) {
  Start();
  EXPECT_GT(service_manager_.Fill(), 0);
  EXPECT_EQ(Stop().status, 0);
}

TEST_F(RelayService, LeavesAloneWhatIsNoSocket) {
  folder_.Write("socket", "a file");
  ExpectFailure(socket_path_ + ": is there already, and no socket");
  EXPECT_EQ(ContentOf(socket_path_), "a file");
  EXPECT_FALSE(fs::exists(socket_path_ + ".lock"));
}

TEST_F(RelayService, LeavesAloneASocketThatAnotherProgramHas) {
  const DatagramSocket other(socket_path_);
  ExpectFailure(socket_path_ + ": another program listens there");
  EXPECT_TRUE(fs::exists(socket_path_));
}

TEST_F(RelayService, DoesNotWriteIntoFilesThatWereMadeToLookLikeItsLock) {
  const std::string victim = folder_.Write("victim", "precious");
  fs::create_hard_link(victim, socket_path_ + ".lock");
  ExpectFailure("cannot lock " + socket_path_ + ".lock: it has another name, too");
  fs::remove(socket_path_ + ".lock");
  fs::create_symlink(victim, socket_path_ + ".lock");
  ExpectFailure(socket_path_ + ".lock: Too many levels of symbolic links");
  EXPECT_EQ(ContentOf(victim), "precious");
}

TEST_F(RelayService, LogsInOneLineWhatHasSeveral) {
  const ProgramResult result =
      RunBriefly(CommandLine({"--group", "of\ntwo lines"}), {{"JOURNAL_STREAM", ""}});
  EXPECT_EQ(result.standard_error, "kestrel-wifi-relay: there is no group 'of two lines'\n");
}

TEST_F(RelayService, TellsWhyItCannotServe) {
  const std::string missing = In("missing");
  const ProgramResult no_folder =
      RunBriefly({KESTREL_WIFI_RELAY, "--socket", missing + "/socket"}, {{"JOURNAL_STREAM", ""}});
  EXPECT_EQ(no_folder.status, 1);
  EXPECT_EQ(no_folder.standard_error,
            "kestrel-wifi-relay: " + missing + "/socket.lock: No such file or directory\n");
  Words command = CommandLine({"--client-dir", missing + "/clients"});
  command.erase(command.begin() + 5, command.begin() + 7);
  const ProgramResult no_links = RunBriefly(command, {{"JOURNAL_STREAM", ""}});
  EXPECT_EQ(no_links.status, 1);
  EXPECT_EQ(no_links.standard_error,
            "kestrel-wifi-relay: " + missing + "/clients: No such file or directory\n");
  EXPECT_FALSE(fs::exists(socket_path_));
  const ProgramResult no_group =
      RunBriefly(CommandLine({"--group", "no such group"}), {{"JOURNAL_STREAM", ""}});
  EXPECT_EQ(no_group.status, 1);
  EXPECT_EQ(no_group.standard_error, "kestrel-wifi-relay: there is no group 'no such group'\n");
  EXPECT_FALSE(fs::exists(socket_path_ + ".lock"));
}

TEST_F(RelayService, TurnsAwayWhomThereIsNoRoomFor) {
  Start({"--clients", "2"});
  const Program one(socket_path_);
  {
    const Program two(socket_path_);
    ExpectExchange(two, "STATUS", "OK\n");
    for (int count = 0; count < 3; ++count) {
      const Program three(socket_path_);
      EXPECT_TRUE(three.SeesTheEnd());
    }
  }
  ExpectExchange(one, "STATUS", "OK\n");
  const Program four(socket_path_);
  ExpectExchange(four, "STATUS", "OK\n");
  const Program five(socket_path_);
  EXPECT_TRUE(five.SeesTheEnd());
  // Once each time that there is no room any more.
  const std::string full = "kestrel-wifi-relay: turning programs away: 2 are connected\n";
  EXPECT_EQ(Stop().standard_error, "kestrel-wifi-relay: " + ListeningLine() + full + full +
                                       "kestrel-wifi-relay: stopping\n");
}

TEST_F(RelayService, ServesOthersWhereDescriptorsRunOut) {
  StartByShell(R"(for n in {3..19}; do eval "exec $n>&-"; done; ulimit -n 9; exec "$@")");
  const Program one(socket_path_);
  ExpectExchange(one, "STATUS", "1");
  auto two = std::make_unique<Program>(socket_path_);
  // There is none left for its link.
  two->Send("STATUS");
  EXPECT_EQ(two->Receive(), "FAIL\n");
  // Nor for this one.
  const Program three(socket_path_);
  three.Send("STATUS");
  // Longer than the relay waits before it tries again to accept somebody.
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(350);
  while (std::chrono::steady_clock::now() < end) {
    ExpectExchange(one, "STATUS", "2");
  }
  two.reset();
  one.Send("SCAN");
  supplicant_->Expect("SCAN", "3");
  EXPECT_EQ(one.Receive(), "3");
  EXPECT_EQ(three.Receive(), "FAIL\n");
  const std::string log = Stop().standard_error;
  const std::string warning = "a program cannot connect: Too many open files\n";
  EXPECT_THAT(log, HasSubstr(warning));
  EXPECT_EQ(log.find(warning), log.rfind(warning)) << "told once";
}

TEST_F(RelayService, NeverTellsWhatCommandsSay) {
  Start({"-v", "--allow-all"});
  const std::string process = "process " + std::to_string(getpid());
  const Program program(socket_path_);
  ExpectExchange(program, "SET_NETWORK 0 psk \"hunter2hunter2\"", "FAIL\n");
  ExpectExchange(program, "hunter2hunter2", "UNKNOWN COMMAND\n");
  ExpectExchange(program, "hunter2 hunter2", "UNKNOWN COMMAND\n");
  ExpectExchange(program, "\nhunter2hunter2", "UNKNOWN COMMAND\n");
  ExpectExchange(program, "A1" + std::string(40, 'B'), "UNKNOWN COMMAND\n");
  program.Send("STATUS");
  ASSERT_TRUE(supplicant_->Receive().has_value());
  supplicant_.reset();
  EXPECT_EQ(program.Receive(), "FAIL\n");
  std::string log = ListeningLine() +
                    "every program that may connect may do all that the supplicant can "
                    "(--allow-all)\n" +
                    process + " has connected\n";
  for (const char* const name : {"SET_NETWORK", "a command", "a command", "a command", "a command",
                                 "STATUS", "STATUS has failed: it has gone"}) {
    log += process + ": " + name + "\n";
  }
  log += "the supplicant at " + supplicant_path_ + " cannot be reached: it has gone\nstopping\n" +
         process + " has left\n";
  EXPECT_EQ(Stop().standard_error,
            std::regex_replace(log, std::regex("(.+)\n"), "kestrel-wifi-relay: $1\n"));
}

TEST_F(RelayService, TellsTheJournalHowMuchALineMatters) {
  supplicant_.reset();
  StartByShell("export JOURNAL_STREAM=$(stat -L -c %d:%i /proc/self/fd/2); exec \"$@\"", {"-v"});
  {
    const Program program(socket_path_);
    program.Send("STATUS");
    EXPECT_EQ(program.Receive(), "FAIL\n");
  }
  const std::string log = Stop().standard_error;
  EXPECT_THAT(log, StartsWith("<6>" + ListeningLine() + "<7>process "));
  EXPECT_THAT(log, HasSubstr("\n<4>the supplicant at "));
  EXPECT_THAT(log, Not(HasSubstr("kestrel-wifi-relay:")));
}

TEST_F(RelayService, TellsTheJournalOfFailures) {
  folder_.Write("socket", "a file");
  Words command = {"bash", "-c",
                   "export JOURNAL_STREAM=$(stat -L -c %d:%i /proc/self/fd/2); exec \"$@\"",
                   "bash"};
  const Words relay = CommandLine();
  command.insert(command.end(), relay.begin(), relay.end());
  EXPECT_EQ(RunBriefly(command).standard_error,
            "<3>" + socket_path_ + ": is there already, and no socket\n");
}

TEST_F(RelayService, ErrorsThatDoNotGoToTheJournalAreForPeople) {
  Start({}, {{"JOURNAL_STREAM", "1:1"}});
  EXPECT_THAT(Stop().standard_error, StartsWith("kestrel-wifi-relay: listening at "));
}

TEST_F(RelayService, TellsAServiceManagerWhoseSocketIsNoFile) {
  const std::string name = In("no file");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
  const size_t size = offsetof(sockaddr_un, sun_path) + 1 + name.size();
  const int manager = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(
      bind(manager, reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(size)), 0);
  const BackgroundProgram relay(CommandLine(),
                                {{"NOTIFY_SOCKET", "@" + name}, {"JOURNAL_STREAM", ""}});
  pollfd told{manager, POLLIN, 0};
  ASSERT_EQ(poll(&told, 1, 20000), 1);
  std::array<char, 64> text{};
  EXPECT_EQ(read(manager, text.data(), text.size()), 7);
  EXPECT_STREQ(text.data(), "READY=1");
  close(manager);
}

TEST_F(RelayService, NeedsNoServiceManager) {
  relay_ = std::make_unique<BackgroundProgram>(
      CommandLine(), Environment{{"NOTIFY_SOCKET", In("nobody")}, {"JOURNAL_STREAM", ""}});
  const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!fs::exists(socket_path_) && std::chrono::steady_clock::now() < patience) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(Stop().standard_error,
            "kestrel-wifi-relay: " + ListeningLine() + "kestrel-wifi-relay: stopping\n");
}

TEST(BackgroundProgram, ThatHasClosedItsStreamsIsEndedInTime) {
  BackgroundProgram program({"bash", "-c", "exec >&- 2>&-; exec sleep 1000"});
  EXPECT_EQ(program.Wait(std::chrono::milliseconds(300)).status, 128 + SIGKILL);
}

TEST_F(RelayService, WorksWithItsStandardStreamsClosed) {
  StartByShell("exec \"$@\" <&- >&- 2>&-", {"-v"});
  const Program program(socket_path_);
  ExpectExchange(program, "STATUS", "OK\n");
  ExpectExchange(program, "SCAN", "OK\n");
  EXPECT_EQ(Stop().standard_error, "");
}

TEST_F(RelayService, WritesItsLogIntoNoFileThatHasTheNumberOfAClosedStream) {
  StartByShell("exec \"$@\" <&- 2>&-", {"-v"});
  const Program program(socket_path_);
  ExpectExchange(program, "STATUS", "OK\n");
  EXPECT_EQ(ContentOf(socket_path_ + ".lock"), std::to_string(relay_->pid()));
}

TEST_F(RelayService, OutlivesWhoeverReadsWhatItSays) {
  StartByShell("exec 9> >(:); wait $!; exec \"$@\" 2>&9 9>&-", {"-v"});
  const Program program(socket_path_);
  ExpectExchange(program, "STATUS", "OK\n");
  EXPECT_EQ(Stop().status, 0);
}

class RelayArguments : public RelayProcess {
 protected:
  void ExpectUsageError(const Words& arguments, const std::string& line) const {
    Words command = {KESTREL_WIFI_RELAY};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const ProgramResult result = RunBriefly(command, {{"JOURNAL_STREAM", ""}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standard_output, "");
    EXPECT_EQ(result.standard_error,
              "kestrel-wifi-relay: " + line + " (see kestrel-wifi-relay --help)\n");
  }
};

TEST_F(RelayArguments, ThatAreWrongAreRefusedInOneLine) {
  const std::string long_path = "/" + std::string(107, 'x');
  ExpectUsageError({"--socket", "here"}, "--socket: must begin with '/': here");
  ExpectUsageError({"--socket", ""}, "--socket: must begin with '/': ");
  ExpectUsageError({"--supplicant", long_path},
                   "--supplicant: is longer than 107 bytes: " + long_path);
  ExpectUsageError({"--client-dir", "tmp"}, "--client-dir: must begin with '/': tmp");
  const std::string long_folder = "/" + std::string(78, 'x');
  ExpectUsageError({"--client-dir", long_folder},
                   "--client-dir: is longer than 78 bytes: " + long_folder);
  for (const char* const mode : {"0888", "rw", "1777", "00660", "-1", "0x1ff"}) {
    ExpectUsageError({"--mode", mode}, "--mode: must be octal, up to 0777: " + std::string(mode));
  }
  ExpectUsageError({"--mode", "01000"}, "--mode: must be octal, up to 0777: 01000");
  ExpectUsageError({"--clients", "0"}, "--clients: must be 1 to 256: 0");
  ExpectUsageError({"--clients", "257"}, "--clients: must be 1 to 256: 257");
  ExpectUsageError({"--clients-per-user", "0"}, "--clients-per-user: must be 1 to 256: 0");
  ExpectUsageError({"--timeout", "0"}, "--timeout: must be 0.01 to 3600: 0");
  ExpectUsageError({"--timeout", "nan"}, "--timeout: must be 0.01 to 3600: nan");
  ExpectUsageError({"--nonsense"}, "The following argument was not expected: --nonsense");
}

TEST_F(RelayArguments, HelpAndVersionArePrinted) {
  const ProgramResult version = RunBriefly({KESTREL_WIFI_RELAY, "--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.standard_output, "kestrel-wifi-relay " KESTREL_VERSION "\n");
  const ProgramResult help = RunBriefly({KESTREL_WIFI_RELAY, "--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.standard_output, HasSubstr("Exit status: 0"));
  EXPECT_EQ(RunBriefly({"sh", "-c", "exec \"$0\" --help >/dev/full", KESTREL_WIFI_RELAY}).status,
            1);
}

}  // namespace
}  // namespace kestrel::test
