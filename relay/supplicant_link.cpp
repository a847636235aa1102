// SPDX-License-Identifier: Apache-2.0
#include "supplicant_link.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <wpa_ctrl.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <regex>
#include <utility>

#include "unix_address.h"

namespace kestrel::relay {
namespace {

namespace fs = std::filesystem;

/// Twice what the supplicant sends at most.
constexpr size_t kLongestReply = 8192;

/// How many messages that nobody asked for are thrown away in one go.
constexpr int kMostDrained = 64;

/// What the supplicant sends by itself begins with its priority, or with the name of an interface.
bool IsEvent(const std::string& text) {
  return text.compare(0, 1, "<") == 0 || text.compare(0, 7, "IFNAME=") == 0;
}

bool IsDeadLink(const fs::directory_entry& entry) {
  static const std::regex name(R"(wpa_ctrl_\d+-\d+)");
  std::error_code gone;
  return std::regex_match(entry.path().filename().string(), name) &&
         entry.symlink_status(gone).type() == fs::file_type::socket &&
         !HasListener(entry.path(), SOCK_DGRAM);
}

}  // namespace

std::unique_ptr<SupplicantLink> SupplicantLink::Open(const std::string& path,
                                                     const std::string& client_folder) {
  // Looked at before: should the supplicant be replaced in between, the link counts as broken.
  struct stat file {};
  if (stat(path.c_str(), &file) != 0) {
    return nullptr;
  }
  wpa_ctrl* const connection = wpa_ctrl_open2(path.c_str(), client_folder.c_str());
  if (connection == nullptr) {
    return nullptr;
  }
  fcntl(wpa_ctrl_get_fd(connection), F_SETFD, FD_CLOEXEC);
  return std::unique_ptr<SupplicantLink>(new SupplicantLink(path, file, connection));
}

void SupplicantLink::Closer::operator()(wpa_ctrl* connection) const { wpa_ctrl_close(connection); }

int SupplicantLink::descriptor() const { return wpa_ctrl_get_fd(connection_.get()); }

SupplicantLink::Sending SupplicantLink::Send(const std::string& command) const {
  if (send(descriptor(), command.data(), command.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) {
    return Sending::kDone;
  }
  return errno == EAGAIN ? Sending::kNoRoom : Sending::kGone;
}

SupplicantLink::Message SupplicantLink::Receive() {
  std::array<char, kLongestReply> buffer;
  size_t size = buffer.size();
  if (wpa_ctrl_recv(connection_.get(), buffer.data(), &size) != 0) {
    const bool nothing_there = errno == EAGAIN || errno == EINTR;
    return {nothing_there ? Message::Kind::kNone : Message::Kind::kBroken, ""};
  }
  std::string text(buffer.data(), size);
  const Message::Kind kind = IsEvent(text) ? Message::Kind::kEvent : Message::Kind::kReply;
  return {kind, std::move(text)};
}

void SupplicantLink::Drain() {
  for (int count = 0; count < kMostDrained && Receive().kind != Message::Kind::kNone; ++count) {
  }
}

bool SupplicantLink::LeadsSomewhere() const {
  // The successor's file may have got the number of the one before.
  struct stat file {};
  return stat(path_.c_str(), &file) == 0 && file.st_dev == file_.st_dev &&
         file.st_ino == file_.st_ino && file.st_mtim.tv_sec == file_.st_mtim.tv_sec &&
         file.st_mtim.tv_nsec == file_.st_mtim.tv_nsec && HasListener(path_, SOCK_DGRAM);
}

int RemoveDeadLinks(const std::string& client_folder) {
  int removed = 0;
  std::error_code unreadable;
  for (const fs::directory_entry& entry : fs::directory_iterator(client_folder, unreadable)) {
    if (IsDeadLink(entry) && unlink(entry.path().c_str()) == 0) {
      ++removed;
    }
  }
  return removed;
}

}  // namespace kestrel::relay
