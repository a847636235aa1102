// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_PROGRESS_LINE_H
#define KESTREL_TOOLS_KESTRELCTL_PROGRESS_LINE_H

#include <string>

namespace kestrelctl {

/// A line on standard error, where that is a terminal, that tells how far something has come. It is
/// gone at the end of the scope.
class ProgressLine {
 public:
  ProgressLine();
  ~ProgressLine() { Clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  bool is_visible() const { return on_terminal_; }
  void Show(const std::string& text);
  void Clear();

 private:
  bool on_terminal_;
  std::string shown_;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_PROGRESS_LINE_H
