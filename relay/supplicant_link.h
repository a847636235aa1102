// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_SUPPLICANT_LINK_H
#define KESTREL_RELAY_SUPPLICANT_LINK_H

#include <sys/stat.h>

#include <memory>
#include <string>

struct wpa_ctrl;

namespace kestrel::relay {

/// A way to the supplicant: a socket of its own, to which the supplicant answers. Nothing here ever
/// waits.
class SupplicantLink {
 public:
  enum class Sending {
    kDone,
    kNoRoom,  ///< the supplicant has not read what it was sent before
    kGone,    ///< whom the link was opened to has gone, without having got the command
  };
  struct Message {
    enum class Kind { kNone, kReply, kEvent, kBroken };
    Kind kind = Kind::kNone;
    std::string text;
  };

  /// Null with errno set when it fails. The supplicant's socket is at `path`, that of the link in
  /// `client_folder`.
  static std::unique_ptr<SupplicantLink> Open(const std::string& path,
                                              const std::string& client_folder);

  int descriptor() const;
  Sending Send(const std::string& command) const;
  /// The next message, if one is there.
  Message Receive();
  /// Throws away what has come so far.
  void Drain();
  /// Whether whom the link was opened to is still there. The kernel does not tell those who wait
  /// for an answer.
  bool LeadsSomewhere() const;

 private:
  struct Closer {
    void operator()(wpa_ctrl* connection) const;
  };
  SupplicantLink(std::string path, const struct stat& file, wpa_ctrl* connection)
      : path_(std::move(path)), file_(file), connection_(connection) {}

  std::string path_;
  struct stat file_;
  std::unique_ptr<wpa_ctrl, Closer> connection_;
};

/// Removes the sockets of links in a folder whose process was killed, and leaves those that
/// somebody holds. Returns how many they were.
int RemoveDeadLinks(const std::string& client_folder);

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_SUPPLICANT_LINK_H
