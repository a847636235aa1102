// SPDX-License-Identifier: Apache-2.0
#include "hex_view.h"

#include <cinttypes>
#include <cstdio>

namespace kestrelctl {
namespace {

constexpr size_t kBytesOfLine = 16;
constexpr char kPadding[] = "   ";  // where a byte would stand

bool IsPrintable(unsigned char byte) { return byte >= 0x20 && byte < 0x7F; }

std::string Offset(uint64_t offset) {
  char text[24];
  snprintf(text, sizeof text, "%08" PRIx64 " ", offset);
  return text;
}

std::string Hex(unsigned char byte) {
  char text[8];
  snprintf(text, sizeof text, " %02x", byte);
  return text;
}

}  // namespace

std::string HexView::Add(std::string_view bytes) {
  std::string lines;
  for (const char byte : bytes) {
    line_ += byte;
    if (line_.size() == kBytesOfLine) {
      lines += EndLine();
    }
  }
  return lines;
}

std::string HexView::EndLine() {
  if (line_.empty()) {
    return "";
  }
  std::string hex;
  std::string text;
  for (size_t i = 0; i < kBytesOfLine; ++i) {
    if (i < line_.size()) {
      const auto byte = static_cast<unsigned char>(line_[i]);
      hex += Hex(byte);
      text += IsPrintable(byte) ? line_[i] : '.';
    } else {
      hex += kPadding;
    }
  }
  std::string line = Offset(offset_) + hex + "  |" + text + "|\n";
  offset_ += line_.size();
  line_.clear();
  return line;
}

}  // namespace kestrelctl
