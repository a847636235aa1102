// SPDX-License-Identifier: Apache-2.0
#include "preload/redirected_file.h"

#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include "preload/board_client.h"
#include "preload/surroundings.h"
#include "protocol/exchange.h"
#include "protocol/path_list.h"

namespace kestrel::board::preload {
namespace {

/// The kernel's numbers for the program's side of pseudo-terminals.
constexpr unsigned kFirstTerminalMajor = 136;
constexpr unsigned kLastTerminalMajor = 143;

/// Room for the longest call and path.
struct Question {
  char text[32 + PATH_MAX];
};

/// Whether the descriptor is of a kind that opens are redirected to. Most are not, and asking this
/// takes a tenth of the time that asking for the path takes.
bool MayBeRedirected(int descriptor) {
  struct stat64 status {};
  if (fstat64(descriptor, &status) != 0) {
    return false;
  }
  const unsigned device_major = major(status.st_rdev);
  return S_ISREG(status.st_mode) || S_ISSOCK(status.st_mode) ||
         (S_ISCHR(status.st_mode) && device_major >= kFirstTerminalMajor &&
          device_major <= kLastTerminalMajor);
}

/// The path of the socket to which a descriptor is connected; false when it is no such socket.
bool ReadPeer(int descriptor, char* path) {
  sockaddr_un peer{};
  socklen_t length = sizeof peer;
  if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) != 0 ||
      peer.sun_family != AF_UNIX) {
    return false;
  }
  memcpy(path, peer.sun_path, sizeof peer.sun_path);
  path[sizeof peer.sun_path] = '\0';
  return true;
}

/// The path of the file that a descriptor is of, written to `name` of PATH_MAX bytes.
bool ReadPath(int descriptor, char* name) {
  if (ReadPeer(descriptor, name)) {
    return true;
  }
  char entry[32];
  snprintf(entry, sizeof entry, "/proc/self/fd/%d", descriptor);
  const ssize_t length = readlink(entry, name, PATH_MAX - 1);
  if (length < 0) {
    return false;
  }
  name[length] = '\0';
  // A file that has been replaced since it was opened.
  static constexpr char kMark[] = " (deleted)";
  char* const end = name + length;
  if (length > static_cast<ssize_t>(strlen(kMark)) && strcmp(end - strlen(kMark), kMark) == 0) {
    *(end - strlen(kMark)) = '\0';
  }
  return true;
}

/// The call and the file, as the board wants to be asked about them.
bool Compose(const char* call, int descriptor, Question* question) {
  const size_t prefix = strlen(call) + 1;
  memcpy(question->text, call, prefix - 1);
  question->text[prefix - 1] = ' ';
  char* const path = question->text + prefix;
  return ReadPath(descriptor, path) && wire::IsListed(OurSurroundings().files, path);
}

/// The reply to a question; false when the board cannot be asked.
bool Ask(const Question& question, wire::Reply* reply) {
  const int connection = wire::Connect(OurSurroundings().socket_path);
  if (connection < 0) {
    return false;
  }
  const auto size = static_cast<uint32_t>(strlen(question.text));
  const int error =
      wire::Exchange(connection, {wire::Operation::kFileCall, 0, question.text, size}, reply);
  CloseConnection(connection);
  return error == 0;
}

int AskForFault(const char* call, int descriptor, wire::TerminalBits* not_kept) {
  Question question;
  if (!MayBeRedirected(descriptor) || !Compose(call, descriptor, &question)) {
    return 0;
  }
  wire::TerminalBits bits;
  wire::Reply reply;
  reply.data = &bits;
  reply.capacity = sizeof bits;
  if (!Ask(question, &reply)) {
    return 0;
  }
  if (not_kept != nullptr && reply.header.size == sizeof bits) {
    *not_kept = bits;
  }
  return reply.header.outcome == wire::Outcome::kFailed ? reply.header.error : 0;
}

}  // namespace

int FileFault(const char* call, int descriptor, wire::TerminalBits* not_kept) {
  if (!IsOnBoard()) {
    return 0;
  }
  const int saved_errno = errno;
  const int fault = AskForFault(call, descriptor, not_kept);
  errno = saved_errno;
  return fault;
}

void Restore(const wire::TerminalBits& bits, const termios& current, termios* settings) {
  const auto restore = [](uint32_t mask, tcflag_t from, tcflag_t* flags) {
    *flags = (*flags & ~mask) | (from & mask);
  };
  restore(bits.input, current.c_iflag, &settings->c_iflag);
  restore(bits.output, current.c_oflag, &settings->c_oflag);
  restore(bits.control, current.c_cflag, &settings->c_cflag);
  restore(bits.local, current.c_lflag, &settings->c_lflag);
  if ((bits.control & CBAUD) != 0) {
    settings->c_ispeed = current.c_ispeed;
    settings->c_ospeed = current.c_ospeed;
  }
  for (unsigned i = 0; i < NCCS; ++i) {
    if ((bits.characters >> i & 1) != 0) {
      settings->c_cc[i] = current.c_cc[i];
    }
  }
}

}  // namespace kestrel::board::preload
