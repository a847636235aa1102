// SPDX-License-Identifier: Apache-2.0
#include "server/fault_table.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "devices/device.h"
#include "host/error.h"
#include "host/text.h"

namespace kestrel::board {
namespace {

using Names = std::vector<std::string>;

/// The calls with which programs reach the devices of a board, and on what faults may let them
/// fail. Requests of ioctl are not names of the board's.
struct Call {
  const char* name;
  std::vector<Names FaultVocabulary::*> on;
};

const std::vector<Call>& Calls() {
  using Vocabulary = FaultVocabulary;
  static const std::vector<Call> calls = {
      {"open", {&Vocabulary::paths}},
      {"ioctl", {}},
      {"flock", {&Vocabulary::files}},
      {"tcgetattr", {&Vocabulary::files}},
      {"tcsetattr", {&Vocabulary::files}},
      {"fcntl", {&Vocabulary::files, &Vocabulary::sockets}},
      {"read", {&Vocabulary::files, &Vocabulary::sockets}},
      {"write", {&Vocabulary::files, &Vocabulary::sockets}},
      {"writev", {&Vocabulary::files, &Vocabulary::sockets}},
      {"connect", {&Vocabulary::sockets}},
      {"setsockopt", {&Vocabulary::sockets}},
      {"close", {&Vocabulary::paths, &Vocabulary::descriptors}},
  };
  return calls;
}

const Call* FindCall(const std::string& name) {
  const auto found = std::find_if(Calls().begin(), Calls().end(),
                                  [&](const Call& call) { return name == call.name; });
  return found == Calls().end() ? nullptr : &*found;
}

Names CallNames() {
  Names names;
  for (const Call& call : Calls()) {
    names.emplace_back(call.name);
  }
  return names;
}

constexpr int kHighestErrno = 4095;

bool Contains(const Names& names, const std::string& name) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

[[noreturn]] void Refuse(const std::string& text, const std::string& reason) {
  throw UsageError("fault '" + text + "': " + reason);
}

template <typename Number>
bool ParseNumber(const std::string& text, int base, Number* number) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, *number, base);
  return error == std::errc() && stop == end && !text.empty();
}

/// Cuts `text` at the last `separator`: what follows it comes back, what precedes it stays.
std::optional<std::string> CutLast(std::string& text, char separator) {
  const size_t position = text.rfind(separator);
  if (position == std::string::npos) {
    return std::nullopt;
  }
  std::string tail = text.substr(position + 1);
  text.resize(position);
  return tail;
}

std::vector<NamedRequest> KnownRequests() {
  std::vector<NamedRequest> known;
  for (const DeviceKind& kind : DeviceKinds()) {
    known.insert(known.end(), kind.requests.begin(), kind.requests.end());
  }
  return known;
}

/// The canonical name of an ioctl request that was given by name or by number.
std::string CheckedRequest(const std::string& text, const std::string& request) {
  uint32_t number = 0;
  if (request.rfind("0x", 0) == 0 && ParseNumber(request.substr(2), 16, &number)) {
    return RequestName(number);
  }
  Names names;
  for (const NamedRequest& known : KnownRequests()) {
    names.emplace_back(known.name);
  }
  if (!Contains(names, request)) {
    Refuse(text, "no ioctl request is called '" + request + "' (known: " + Join(names) +
                     ", or a number such as 0x8044B401)");
  }
  return request;
}

/// The thing that a fault is limited to, in the words in which the server asks for it.
std::string CheckedWhat(const std::string& text, const Call& call, const std::string& what,
                        const FaultVocabulary& vocabulary) {
  if (call.on.empty()) {
    return CheckedRequest(text, what);
  }
  Names known;
  for (const auto names : call.on) {
    known.insert(known.end(), (vocabulary.*names).begin(), (vocabulary.*names).end());
  }
  if (!Contains(known, what)) {
    Refuse(text, "the board has nothing called '" + what + "' to " + call.name +
                     " (known: " + Join(known) + ")");
  }
  return what;
}

/// Reads ERRNO[@N] into `fault`.
void ParseFailure(std::string failure, Fault* fault) {
  const std::optional<std::string> occurrence = CutLast(failure, '@');
  if (occurrence.has_value() &&
      (!ParseNumber(*occurrence, 10, &fault->occurrence) || fault->occurrence == 0)) {
    Refuse(fault->text, "after @ stands which call fails, counted from 1");
  }
  const std::optional<int> error = ErrnoNumber(failure);
  if (!error.has_value()) {
    Refuse(fault->text, "no errno is called '" + failure + "' (such as EIO or ENODEV)");
  }
  fault->error = *error;
}

}  // namespace

std::optional<int> ErrnoNumber(const std::string& name) {
  // Two names for one number: the C library tells only the other one.
  if (name == "EWOULDBLOCK") {
    return EWOULDBLOCK;
  }
  if (name == "ENOTSUP") {
    return ENOTSUP;
  }
  for (int number = 1; number <= kHighestErrno; ++number) {
    const char* known = strerrorname_np(number);
    if (known != nullptr && name == known) {
      return number;
    }
  }
  return std::nullopt;
}

std::string RequestName(uint32_t number) {
  for (const NamedRequest& known : KnownRequests()) {
    if (known.number == number) {
      return known.name;
    }
  }
  return std::to_string(number);
}

Fault ParseFault(const std::string& text, const FaultVocabulary& vocabulary) {
  Fault fault;
  fault.text = text;
  std::string call = text;
  const std::optional<std::string> failure = CutLast(call, '=');
  if (!failure.has_value()) {
    Refuse(text, "a fault is written CALL[:WHAT]=ERRNO[@N], such as open:/dev/gpiochip0=EACCES");
  }
  ParseFailure(*failure, &fault);
  const size_t colon = call.find(':');
  fault.call = call.substr(0, colon);
  const Call* known = FindCall(fault.call);
  if (known == nullptr) {
    Refuse(text, "no call is named '" + fault.call + "' (known: " + Join(CallNames()) + ")");
  }
  if (colon != std::string::npos) {
    fault.what = CheckedWhat(text, *known, call.substr(colon + 1), vocabulary);
  }
  return fault;
}

int FaultTable::Next(const std::string& call, const std::string& what) {
  int error = 0;
  for (Fault& fault : faults_) {
    if (fault.call != call || (!fault.what.empty() && fault.what != what)) {
      continue;
    }
    ++fault.seen;
    if (error == 0 && (fault.occurrence == 0 || fault.occurrence == fault.seen)) {
      error = fault.error;
    }
  }
  return error;
}

}  // namespace kestrel::board
