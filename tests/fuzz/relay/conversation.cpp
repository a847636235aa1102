// SPDX-License-Identifier: Apache-2.0
// Programs that send the relay anything, and a supplicant that answers anything, goes and comes.
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "command_filter.h"
#include "fuzz/support/input.h"
#include "fuzz/support/promise.h"
#include "host/event_loop.h"
#include "host/unique_fd.h"
#include "relay.h"
#include "unix_address.h"

namespace {

/// How far the clock is ahead, so that nobody waits for the end of a time.
int64_t g_ahead_ms = 0;

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  if (clock == CLOCK_MONOTONIC) {
    const int64_t nanoseconds = time->tv_nsec + g_ahead_ms % 1000 * 1000000;
    time->tv_sec += g_ahead_ms / 1000 + nanoseconds / 1000000000;
    time->tv_nsec = nanoseconds % 1000000000;
  }
  return result;
}

namespace kestrel::fuzz {
namespace {

namespace fs = std::filesystem;
using board::UniqueFd;
using relay::UnixAddress;

constexpr size_t kLargestMessage = 16384;
constexpr size_t kMostPrograms = 6;  ///< more than the relay has room for

/// A folder for all inputs, removed with the process.
class Folder {
 public:
  Folder() {
    std::string name = (fs::temp_directory_path() / "kestrel-fuzz-XXXXXX").string();
    Promise(mkdtemp(name.data()) != nullptr);
    path_ = name;
  }
  ~Folder() { fs::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string In(const std::string& name) const { return (path_ / name).string(); }
  bool HasNothingBut(const std::set<std::string>& names) const {
    return std::all_of(
        fs::recursive_directory_iterator(path_), fs::recursive_directory_iterator(),
        [&](const auto& entry) { return names.count(entry.path().filename()) != 0; });
  }

 private:
  fs::path path_;
};

size_t CountDescriptors() {
  return static_cast<size_t>(
      std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

/// The next message at a socket, if one is there.
std::optional<std::string> Receive(int descriptor, sockaddr_un* sender = nullptr) {
  static std::array<char, kLargestMessage> buffer;
  socklen_t length = sizeof(sockaddr_un);
  const ssize_t size = recvfrom(descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT,
                                reinterpret_cast<sockaddr*>(sender), sender ? &length : nullptr);
  return size < 0 ? std::nullopt
                  : std::optional<std::string>({buffer.data(), static_cast<size_t>(size)});
}

struct Program {
  UniqueFd connection;
  size_t sent = 0;
  size_t answered = 0;
  bool ended = false;
};

class Conversation {
 public:
  explicit Conversation(const Folder& folder) {
    options_.socket_path = folder.In("socket");
    options_.supplicant_path = folder.In("supplicant");
    options_.client_folder = folder.In("clients");
    options_.most_clients = kMostPrograms - 1;
    options_.most_clients_per_user = kMostPrograms - 1;
    BeginSupplicant();
    relay_ = std::make_unique<relay::Relay>(loop_, options_, log_);
  }

  /// Does what a section says: its first letter what, and for programs the next which.
  void Do(const std::string& section) {
    const char deed = section.empty() ? '\0' : section[0];
    const std::string rest = section.empty() ? "" : section.substr(1);
    switch (deed) {
      case 'c':
        return Connect();
      case 's':
        return Send(rest);
      case 'l':
        return Leave(rest);
      case 'h':
        return SendNoMore(rest);
      case 'r':
        return AnswerOldest(rest);
      case 'k':
        supplicant_ = UniqueFd();
        return;
      case 'b':
        return BeginSupplicant();
      case 'p':
        g_ahead_ms += 200;
        return;
      case 't':
        g_ahead_ms += 10000;
        return;
      default:
        return;
    }
  }

  /// Lets the relay do what there is to be done, and looks at what has come of it.
  void Proceed() {
    for (int round = 0; round < 4; ++round) {
      loop_.CallAfter(std::chrono::milliseconds(0), [this] { loop_.Stop(); });
      loop_.Run();
    }
    TakeCommands();
    for (Program& program : programs_) {
      TakeReplies(program);
    }
  }

  /// Nobody waits for good.
  void Finish() {
    for (size_t round = 0; round <= most_sent_; ++round) {
      g_ahead_ms += 10001;
      Proceed();
    }
    for (const Program& program : programs_) {
      Promise(program.ended || program.answered == program.sent);
    }
  }

 private:
  void BeginSupplicant() {
    supplicant_ = UniqueFd(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    unlink(options_.supplicant_path.c_str());
    const UnixAddress address(options_.supplicant_path);
    Promise(bind(supplicant_.get(), address.get(), UnixAddress::size()) == 0);
    senders_.clear();
  }

  void Connect() {
    if (programs_.size() < kMostPrograms) {
      programs_.emplace_back();
      UniqueFd& connection = programs_.back().connection;
      connection = UniqueFd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
      const UnixAddress address(options_.socket_path);
      Promise(connect(connection.get(), address.get(), UnixAddress::size()) == 0);
    }
  }

  /// The program that the first byte of the text names, while it is connected.
  Program* Named(const std::string& text) {
    const auto number = text.empty() ? programs_.size() : static_cast<size_t>(text[0] - '0');
    return number < programs_.size() && programs_[number].connection.valid() ? &programs_[number]
                                                                             : nullptr;
  }

  void Send(const std::string& text) {
    Program* const program = Named(text);
    const std::string bytes = text.empty() ? "" : text.substr(1);
    if (program != nullptr && send(program->connection.get(), bytes.data(), bytes.size(),
                                   MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) {
      most_sent_ = std::max(most_sent_, ++program->sent);
    }
  }

  void Leave(const std::string& text) {
    if (Program* const program = Named(text)) {
      program->connection = UniqueFd();
      program->ended = true;
    }
  }

  void SendNoMore(const std::string& text) {
    if (Program* const program = Named(text)) {
      shutdown(program->connection.get(), SHUT_WR);
    }
  }

  void AnswerOldest(const std::string& reply) {
    if (!senders_.empty() && supplicant_.valid()) {
      sendto(supplicant_.get(), reply.data(), reply.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(&senders_.front()), sizeof(sockaddr_un));
      said_.insert(reply.substr(0, 8192));
      senders_.pop_front();
    }
  }

  void TakeCommands() {
    sockaddr_un sender{};
    while (supplicant_.valid()) {
      const std::optional<std::string> command = Receive(supplicant_.get(), &sender);
      if (!command) {
        return;
      }
      Promise(relay::Judge(*command) == relay::Verdict::kAllowed);
      // Events, and what comes too late, go to the same sockets.
      senders_.push_back(sender);
      senders_.push_back(sender);
      sender = {};
    }
  }

  void TakeReplies(Program& program) {
    while (!program.ended) {
      const std::optional<std::string> reply = Receive(program.connection.get());
      if (!reply) {
        pollfd watched = {program.connection.get(), 0, 0};
        program.ended = poll(&watched, 1, 0) == 1;
        return;
      }
      pollfd watched = {program.connection.get(), 0, 0};
      if (reply->empty() && poll(&watched, 1, 0) == 1) {
        program.ended = true;
        return;
      }
      // One for each command, and nothing but what the supplicant said.
      Promise(++program.answered <= program.sent);
      Promise(*reply == "FAIL\n" || said_.count(*reply) != 0);
      Promise(reply->compare(0, 1, "<") != 0 && reply->compare(0, 7, "IFNAME=") != 0);
    }
  }

  board::EventLoop loop_;
  const relay::Log log_{true};
  relay::Options options_;
  UniqueFd supplicant_;
  std::deque<sockaddr_un> senders_;
  std::set<std::string> said_;
  std::vector<Program> programs_;
  size_t most_sent_ = 0;
  std::unique_ptr<relay::Relay> relay_;
};

}  // namespace
}  // namespace kestrel::fuzz

/// Each section is something that happens: "c" a program connects, "sNTEXT" program N sends, "lN"
/// it leaves, "hN" it sends no more, "rTEXT" the supplicant answers, "k" it is killed, "b" one
/// begins, "p" a little time passes, "t" a long time.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using kestrel::fuzz::Promise;
  static const kestrel::fuzz::Folder folder;
  const size_t descriptors = kestrel::fuzz::CountDescriptors();
  {
    kestrel::fuzz::Input input(data, size);
    kestrel::fuzz::Conversation conversation(folder);
    while (!input.AtEnd()) {
      conversation.Do(input.TakeSection());
      conversation.Proceed();
    }
    conversation.Finish();
  }
  Promise(kestrel::fuzz::CountDescriptors() == descriptors);
  Promise(folder.HasNothingBut({"clients", "supplicant"}));
  return 0;
}
