// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_SERVER_FAULT_TABLE_H
#define KESTREL_BOARD_SERVER_FAULT_TABLE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrel::board {

/// One `CALL[:WHAT]=ERRNO[@N]`: the call, what it is done on (any when empty), the errno with which
/// it fails, and which of the calls that match does so (every one when 0).
struct Fault {
  std::string text;
  std::string call;
  std::string what;
  int error = 0;
  uint64_t occurrence = 0;
  uint64_t seen = 0;
};

/// What faults on the devices of a board may name.
struct FaultVocabulary {
  std::vector<std::string> paths;        ///< paths that can be opened
  std::vector<std::string> files;        ///< those of them that are redirected to a real file
  std::vector<std::string> sockets;      ///< those of them that can be connected to
  std::vector<std::string> descriptors;  ///< other kinds of descriptors, such as "line"
};

/// Throws UsageError saying what is wrong and what would have been right.
Fault ParseFault(const std::string& text, const FaultVocabulary& vocabulary);

/// The calls that are to fail.
class FaultTable {
 public:
  void Add(Fault fault) { faults_.push_back(std::move(fault)); }
  void Clear() { faults_.clear(); }
  const std::vector<Fault>& faults() const { return faults_; }

  /// To be asked once for every call, before it is done: the errno with which it is to fail, or 0.
  int Next(const std::string& call, const std::string& what);

 private:
  std::vector<Fault> faults_;
};

/// The name under which faults know an ioctl: that of its request, or its number.
std::string RequestName(uint32_t number);

/// The number of an errno's name, if there is such a name.
std::optional<int> ErrnoNumber(const std::string& name);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_SERVER_FAULT_TABLE_H
