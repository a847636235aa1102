// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_HEX_VIEW_H
#define KESTREL_TOOLS_KESTRELCTL_HEX_VIEW_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kestrelctl {

/// Turns bytes into lines of up to 16: the offset of the first, the bytes in hexadecimal, and
/// those that can be printed as text.
class HexView {
 public:
  /// Takes more bytes and returns the lines that they complete.
  std::string Add(std::string_view bytes);

  /// Ends the line that has been begun, if one has, and returns it.
  std::string EndLine();

  bool has_begun_line() const { return !line_.empty(); }

 private:
  uint64_t offset_ = 0;  ///< of the first byte of `line_`
  std::string line_;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_HEX_VIEW_H
