// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_JOB_CONTROL_H
#define KESTREL_TOOLS_KESTRELCTL_JOB_CONTROL_H

#include "changed_terminal.h"

namespace kestrelctl {

/// From construction on, stops (SIGTSTP) and continues (SIGCONT) of this program wait for Heed(),
/// so that a changed terminal is given back for the time in between. To be made before the terminal
/// is changed.
class JobControl {
 public:
  JobControl();
  ~JobControl();
  JobControl(const JobControl&) = delete;
  JobControl& operator=(const JobControl&) = delete;

  /// A descriptor that can be read once one of the signals has come; -1 when there is none.
  int descriptor() const { return signals_; }

  /// Does what the signals that have come ask for. Returns when the program is to go on, with the
  /// terminal changed.
  void Heed(const ChangedTerminal& terminal) const;

 private:
  int signals_;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_JOB_CONTROL_H
