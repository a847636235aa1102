// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_PROTOCOL_WIRE_H
#define KESTREL_BOARD_PROTOCOL_WIRE_H

#include <stdint.h>

/// What the preloaded object, the board's server and the command line say to each other: messages
/// over a sequenced-packet socket, of the same layout for 32-bit and 64-bit programs. A request
/// carries one end of a socket pair, on which its reply comes back, so that threads and processes
/// which share a descriptor never take each other's replies.
namespace kestrel::board::wire {

inline constexpr uint32_t kMagic = 0x4B425231;

/// The largest payload of a message: what the argument of an ioctl may have, and what every socket
/// takes at once. Longer texts of the command line pass as files, in both directions.
inline constexpr uint32_t kPayloadLimit = 16 * 1024;

/// The longest text that passes as a file.
inline constexpr uint32_t kTextLimit = 64 * 1024 * 1024;

enum class Operation : uint32_t {
  kOpen = 1,     ///< number: open flags; payload: the path
  kIoctl = 2,    ///< number: the request; payload: its argument's bytes
  kClose = 3,    ///< asks whether closing the descriptor is to fail
  kControl = 4,  ///< payload: a request of the command line as JSON
  /// Asks whether a call on a real file, to which the board redirected an open, is to fail;
  /// payload: the call's name, a space and the file's path. The answer to "tcsetattr" is
  /// TerminalBits.
  kFileCall = 5,
  kAttach = 6,  ///< payload as kControl; a descriptor comes along with the answer
  /// Asks for the real socket that stands at a path; payload: the path.
  kConnect = 7,
  /// The text of the next kControl or kAttach, which is then empty, is in the file that comes along
  /// in place of a reply's socket. There is no reply.
  kText = 8,
};

struct RequestHeader {
  uint32_t magic = kMagic;
  Operation operation{};
  uint32_t number = 0;
  uint32_t size = 0;  ///< bytes of payload that follow
};
static_assert(sizeof(RequestHeader) == 16);

enum class Outcome : uint32_t {
  kFailed = 0,    ///< the call fails with `error`
  kDone = 1,      ///< the call returns `result`; the payload goes into its argument
  kRedirect = 2,  ///< the path to be used in place of the one asked for is the payload
  kText = 3,      ///< the payload is in the file that comes along
};

struct ReplyHeader {
  uint32_t magic = kMagic;
  Outcome outcome = Outcome::kFailed;
  int32_t result = 0;
  int32_t error = 0;
  uint32_t size = 0;               ///< bytes of payload that follow
  int32_t descriptor_offset = -1;  ///< where in the argument a descriptor that comes along goes
};
static_assert(sizeof(ReplyHeader) == 24);

/// Bits of a terminal's settings, by members of struct termios; of `characters`, bit N is c_cc[N].
struct TerminalBits {
  uint32_t input = 0;
  uint32_t output = 0;
  uint32_t control = 0;
  uint32_t local = 0;
  uint32_t characters = 0;

  bool Any() const { return (input | output | control | local | characters) != 0; }
};
static_assert(sizeof(TerminalBits) == 20);

/// Names of the environment variables through which a program finds its board.
inline constexpr char kSocketVariable[] = "KESTREL_BOARD";
/// Colon-separated paths that the board stands in for; one that ends in '#' is as path_list.h says.
inline constexpr char kPathsVariable[] = "KESTREL_BOARD_PATHS";
/// Colon-separated real files, and sockets, to which it redirects its paths.
inline constexpr char kFilesVariable[] = "KESTREL_BOARD_FILES";

}  // namespace kestrel::board::wire

#endif  // KESTREL_BOARD_PROTOCOL_WIRE_H
