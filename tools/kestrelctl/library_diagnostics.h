// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_LIBRARY_DIAGNOSTICS_H
#define KESTREL_TOOLS_KESTRELCTL_LIBRARY_DIAGNOSTICS_H

namespace kestrelctl {

/// Shows or hides what the library prints about failures. They are hidden at first: kestrelctl
/// says the same in a line of its own.
void ShowLibraryDiagnostics(bool show);

/// While one lives, standard error goes nowhere, unless the library's diagnostics are shown.
class LibraryCall {
 public:
  LibraryCall();
  ~LibraryCall();
  LibraryCall(const LibraryCall&) = delete;
  LibraryCall& operator=(const LibraryCall&) = delete;

 private:
  int standard_error_ = -1;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_LIBRARY_DIAGNOSTICS_H
