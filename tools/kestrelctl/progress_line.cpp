// SPDX-License-Identifier: Apache-2.0
#include "progress_line.h"

#include <unistd.h>

#include <cstdio>

namespace kestrelctl {
namespace {

constexpr char kToLineStart[] = "\r";
constexpr char kEraseRest[] = "\x1b[K";

}  // namespace

ProgressLine::ProgressLine() : on_terminal_(isatty(STDERR_FILENO) == 1) {}

void ProgressLine::Show(const std::string& text) {
  if (!on_terminal_ || text == shown_) {
    return;
  }
  shown_ = text;
  fputs((kToLineStart + text + kEraseRest).c_str(), stderr);
}

void ProgressLine::Clear() {
  if (!shown_.empty()) {
    Show("");
  }
}

}  // namespace kestrelctl
