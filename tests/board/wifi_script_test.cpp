// SPDX-License-Identifier: Apache-2.0
// A Wi-Fi daemon that misbehaves, and programs that do.
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>

#include "wifi_board.h"

namespace kestrel::test {
namespace {

using namespace std::string_literals;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

class WifiScript : public WifiBoard {
 protected:
  void ExpectRefused(const std::string& rules, const std::string& reason) {
    const std::string path = files_.Write("bad.toml", rules);
    ExpectUsageError({"run", "--wifi-script", path, "true"}, path + reason);
  }
};

TEST_F(WifiScript, IsPrintedRuleByRule) {
  StartWithRules(
      "[[rule]]\ncommand = \"SCAN*\"\ndelay = 1500\ncount = 3\n"
      "[[rule]]\ncommand = \"PING\"\nreply = \"no\\n\"\n");
  EXPECT_EQ(WifiClient(SocketPath()).Ask("PING"), "no\n");
  const std::string state = Board({"wifi"}).standard_output;
  EXPECT_NE(state.find("  rule \"SCAN*\": answer after 1500 ms, used 0 of 3\n"
                       "  rule \"PING\": reply \"no\\n\", used 1\n"),
            std::string::npos)
      << state;
}

TEST_F(WifiScript, FirstRuleThatFitsDecidesUntilItIsUsedUp) {
  StartWithRules(
      "[[rule]]\ncommand = \"SCAN\"\nreply = \"FAIL\\n\"\ncount = 2\n"
      "[[rule]]\ncommand = \"S?AN*\"\nreply-hex = \"00ff\"\ncount = 1\n"
      "[[rule]]\ncommand = \"GET_NETWORK * ssid\"\nreply = \"\"\n");
  const WifiClient client(SocketPath());
  EXPECT_EQ(client.Ask("SCAN_RESULTS"), "\0\xff"s);
  EXPECT_EQ(client.Ask("SCAN"), "FAIL\n");
  EXPECT_EQ(client.Ask("SCAN"), "FAIL\n");
  EXPECT_EQ(client.Ask("SCAN"), "OK\n");
  EXPECT_EQ(client.Ask("GET_NETWORK 17 ssid"), "");
  EXPECT_EQ(client.Ask("GET_NETWORK 17 psk"), "FAIL\n");
}

TEST_F(WifiScript, LongRepliesComeInOneDatagram) {
  StartWithRules(
      "[[rule]]\ncommand = \"STATUS\"\nreply = \"0123456789abcdef\"\nrepeat = 128\n"
      "[[rule]]\ncommand = \"PING\"\nreply = \"x\"\nrepeat = 65536\n");
  const WifiClient client(SocketPath());
  EXPECT_EQ(client.Ask("STATUS").size(), 2048U);
  EXPECT_EQ(client.Ask("PING"), std::string(65536, 'x'));
}

TEST_F(WifiScript, ConnectionMayEndInTheMiddleOfAnExchange) {
  StartWithRules("[[rule]]\ncommand = \"ADD_NETWORK\"\naction = \"close\"\n");
  const WifiClient other(SocketPath());
  const WifiClient client(SocketPath());
  EXPECT_TRUE(client.Send("ADD_NETWORK\0"s));
  EXPECT_TRUE(client.SeesTheEnd());
  EXPECT_EQ(other.Ask("PING"), "PONG\n");
  EXPECT_EQ(WifiClient(SocketPath()).Ask("LIST_NETWORKS"), "network id / ssid / bssid / flags\n");
}

TEST_F(WifiScript, DaemonMayDie) {
  StartWithRules("[[rule]]\ncommand = \"SAVE_CONFIG\"\naction = \"die\"\n");
  const WifiClient other(SocketPath());
  const WifiClient client(SocketPath());
  EXPECT_EQ(other.Ask("PING"), "PONG\n");
  EXPECT_TRUE(client.Send("SAVE_CONFIG\0"s));
  EXPECT_TRUE(client.SeesTheEnd());
  EXPECT_TRUE(other.SeesTheEnd());
  EXPECT_EQ(WifiClient(SocketPath()).error(), ECONNREFUSED);
  Board({"wifi", "--daemon", "running"});
  EXPECT_EQ(WifiClient(SocketPath()).Ask("PING"), "PONG\n");
}

TEST_F(WifiScript, SilenceIsNoReply) {
  StartWithRules("[[rule]]\ncommand = \"STATUS\"\naction = \"silence\"\n");
  const WifiClient client(SocketPath());
  EXPECT_TRUE(client.Send("STATUS\0"s));
  // The reply to the next command is the first that comes.
  EXPECT_EQ(client.Ask("PING"), "PONG\n");
}

TEST_F(WifiScript, LateRepliesKeepTheOrderAndHoldUpNobodyElse) {
  StartWithRules("[[rule]]\ncommand = \"ADD_NETWORK\"\ndelay = 300\n");
  const WifiClient other(SocketPath());
  const WifiClient client(SocketPath());
  const Clock::time_point start = Clock::now();
  EXPECT_TRUE(client.Send("ADD_NETWORK\0"s));
  EXPECT_TRUE(client.Send("PING\0"s));
  EXPECT_EQ(other.Ask("PING"), "PONG\n");
  EXPECT_EQ(client.Receive(milliseconds(0)), std::nullopt);
  EXPECT_EQ(client.Receive(), "0\n");
  EXPECT_GE(Clock::now() - start, milliseconds(300));
  EXPECT_EQ(client.Receive(), "PONG\n");
}

TEST_F(WifiScript, ClientMayLeaveBeforeALateReply) {
  StartWithRules("[[rule]]\ncommand = \"STATUS\"\ndelay = 600000\n");
  auto client = std::make_unique<WifiClient>(SocketPath());
  EXPECT_TRUE(client->Send("STATUS\0"s));
  client.reset();
  const WifiClient other(SocketPath());
  EXPECT_EQ(other.Ask("PING"), "PONG\n");
  const auto deadline = Clock::now() + std::chrono::seconds(20);
  while (Show().at("clients").size() > 1 && Clock::now() < deadline) {
  }
  EXPECT_EQ(Show().at("clients").size(), 1U);
}

TEST_F(WifiScript, ScriptsChangeWhileTheBoardRuns) {
  StartWithRules("[[rule]]\nreply = \"one\"\n");
  const WifiClient client(SocketPath());
  EXPECT_EQ(client.Ask("PING"), "one");
  const std::string as_json = files_.Write("s.json", R"({"rule": [{"reply": "two", "count": 1}]})");
  EXPECT_EQ(Board({"wifi", "--script", as_json}).status, 0);
  EXPECT_EQ(Show().at("rules").at(0).at("used"), 0);
  EXPECT_EQ(client.Ask("PING"), "two");
  EXPECT_EQ(client.Ask("PING"), "PONG\n");
  const nlohmann::json rule = Show().at("rules").at(0);
  EXPECT_EQ(rule, (nlohmann::json{{"command", "*"},
                                  {"action", "reply"},
                                  {"reply", "two"},
                                  {"delay", 0},
                                  {"used", 1},
                                  {"count", 1}}));
  Board({"wifi", "--script", as_json});
  EXPECT_EQ(Board({"wifi", "--script", "none"}).status, 0);
  EXPECT_EQ(client.Ask("PING"), "PONG\n");
}

TEST_F(WifiScript, RulesMayStandInTheConfiguration) {
  StartWith("[[wifi.rule]]\ncommand = \"PING\"\nreply = \"gnop\"\n");
  EXPECT_EQ(WifiClient(SocketPath()).Ask("PING"), "gnop");
}

TEST_F(WifiScript, BadScriptsAreRefusedWithFileLineAndReason) {
  ExpectRefused("[[rule]]\ncommand = 7\n", ":2: 'rule.command' must be a text");
  ExpectRefused("[[rule]]\naction = \"sulk\"\n",
                ":2: 'rule.action' must be one of: answer, silence, close, die");
  ExpectRefused("[[rule]]\nreply = \"\"\n\naction = \"close\"\n",
                ":4: 'rule.action': a rule has a reply or an action, not both");
  ExpectRefused("[[rule]]\nreply = \"a\"\nreply-hex = \"00\"\n",
                ":3: 'rule.reply-hex': a rule has one reply");
  ExpectRefused("[[rule]]\nreply-hex = \"0\"\n",
                ":2: 'rule.reply-hex': bytes are pairs of hexadecimal digits");
  ExpectRefused("[[rule]]\nreply = \"ab\"\nrepeat = 40000\n",
                ":3: 'rule.repeat': a reply has at most 65536 bytes");
  ExpectRefused("[[rule]]\ndelay = -1\n",
                ":2: 'rule.delay' must be a whole number from 0 to 600000");
  ExpectRefused("[[rule]]\ncount = 0\n",
                ":2: 'rule.count' must be a whole number from 1 to 1000000");
  ExpectRefused("[[rules]]\nreply = \"\"\n", ":1: unknown key 'rules' (known: rule)");
  ExpectRefused(
      "[[rule]]\nanswer = \"\"\n",
      ":2: unknown key 'rule.answer' (known: action, command, count, delay, repeat, reply, "
      "reply-hex)");
  Start("bench");
  ExpectUsageError({"wifi", "--script", "/missing.toml"},
                   "/missing.toml: No such file or directory");
}

TEST_F(WifiScript, CommandsNeedNoNul) {
  Start("bench");
  const WifiClient client(SocketPath());
  EXPECT_TRUE(client.Send("PING"));
  EXPECT_EQ(client.Receive(), "PONG\n");
}

TEST_F(WifiScript, NothingBehindANulCounts) {
  Start("bench");
  const WifiClient client(SocketPath());
  EXPECT_TRUE(client.Send("PING\0PONG"s));
  EXPECT_EQ(client.Receive(), "PONG\n");
  EXPECT_TRUE(client.Send("\0PING\0"s));
  EXPECT_EQ(client.Receive(), "UNKNOWN COMMAND\n");
}

TEST_F(WifiScript, EmptyDatagramIsNoEnd) {
  Start("bench");
  const WifiClient client(SocketPath());
  EXPECT_TRUE(client.Send(""));
  EXPECT_EQ(client.Receive(), "UNKNOWN COMMAND\n");
  EXPECT_EQ(client.Ask("PING"), "PONG\n");
}

TEST_F(WifiScript, LongCommandsAreCut) {
  Start("bench");
  const WifiClient client(SocketPath());
  for (const size_t size : {4095U, 4096U, 4097U, 60000U}) {
    EXPECT_TRUE(client.Send("PING" + std::string(size - 4, 'x')));
    EXPECT_EQ(client.Receive(), "UNKNOWN COMMAND\n");
    EXPECT_TRUE(client.Send("STATUS" + std::string(size - 6, 'x')));
    EXPECT_EQ(client.Receive().value_or("").substr(0, 10), "wpa_state=");
  }
}

TEST_F(WifiScript, EachClientGetsItsOwnReplies) {
  Start("bench");
  std::vector<std::unique_ptr<WifiClient>> clients;
  for (int i = 0; i < 20; ++i) {
    clients.push_back(std::make_unique<WifiClient>(SocketPath()));
    EXPECT_EQ(clients.back()->Ask("ADD_NETWORK"), std::to_string(i) + "\n");
    clients.back()->Ask("SET_NETWORK " + std::to_string(i) + " priority " + std::to_string(i));
  }
  for (int round = 0; round < 3; ++round) {
    for (size_t i = 0; i < clients.size(); ++i) {
      EXPECT_TRUE(clients[i]->Send("GET_NETWORK " + std::to_string(i) + " priority" + '\0'));
    }
  }
  for (size_t i = 0; i < clients.size(); ++i) {
    for (int round = 0; round < 3; ++round) {
      EXPECT_EQ(clients[i]->Receive(), std::to_string(i));
    }
  }
}

TEST_F(WifiScript, ClientThatDoesNotReadHoldsUpNobody) {
  StartWithRules("[[rule]]\ncommand = \"STATUS\"\nreply = \"x\"\nrepeat = 60000\n");
  const WifiClient lazy(SocketPath());
  int sent = 0;
  while (send(lazy.descriptor(), "STATUS", 7, MSG_DONTWAIT | MSG_NOSIGNAL) == 7) {
    ++sent;
  }
  const WifiClient other(SocketPath());
  EXPECT_EQ(other.Ask("PING"), "PONG\n");
  EXPECT_EQ(Board({"wifi"}).status, 0);
  // All that was sent is answered in the end.
  for (int i = 0; i < sent; ++i) {
    ASSERT_EQ(lazy.Receive().value_or("").size(), 60000U) << i;
  }
}

TEST_F(WifiScript, ClientThatIsKilledHoldsUpNobody) {
  StartWithRules("[[rule]]\ncommand = \"STATUS\"\nreply = \"x\"\nrepeat = 60000\n");
  const pid_t child = fork();
  if (child == 0) {
    const WifiClient client(SocketPath());
    while (client.Send("STATUS\0"s)) {
    }
    _exit(0);
  }
  const WifiClient other(SocketPath());
  const auto deadline = Clock::now() + std::chrono::seconds(20);
  while (Show().at("clients").size() < 2 && Clock::now() < deadline) {
  }
  kill(child, SIGKILL);
  EXPECT_EQ(other.Ask("PING"), "PONG\n");
  while (Show().at("clients").size() > 1 && Clock::now() < deadline) {
  }
  EXPECT_EQ(Show().at("clients").size(), 1U);
}

TEST_F(WifiScript, AFloodOfCommandsIsAnswered) {
  Start("bench");
  const WifiClient client(SocketPath());
  for (int i = 0; i < 5000; ++i) {
    ASSERT_EQ(client.Ask(i % 2 == 0 ? "ADD_NETWORK" : "REMOVE_NETWORK all"),
              i % 2 == 0 ? "0\n" : "OK\n");
  }
  EXPECT_EQ(Show().at("clients").at(0).at("commands"), 5000);
  EXPECT_EQ(Show().at("commands").size(), 20U);
}

TEST_F(WifiScript, MoreClientsThanItServesWaitTheirTurn) {
  Start("bench");
  std::vector<std::unique_ptr<WifiClient>> clients;
  clients.reserve(300);
  for (int i = 0; i < 300; ++i) {
    clients.push_back(std::make_unique<WifiClient>(SocketPath()));
  }
  EXPECT_EQ(clients.front()->Ask("PING"), "PONG\n");
  EXPECT_TRUE(clients.back()->Send("PING\0"s));
  clients.erase(clients.begin(), clients.begin() + 100);
  EXPECT_EQ(clients.back()->Receive(), "PONG\n");
}

}  // namespace
}  // namespace kestrel::test
