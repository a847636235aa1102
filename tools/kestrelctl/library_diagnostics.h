// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_LIBRARY_DIAGNOSTICS_H
#define KESTREL_TOOLS_KESTRELCTL_LIBRARY_DIAGNOSTICS_H

#include <cerrno>
#include <string>

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

/// Calls a function of the library; errno afterwards is the library's.
template <typename Function>
int CallLibrary(const Function& function) {
  const LibraryCall call;
  return function();
}

/// While one lives, standard error is collected. Diagnostics that are to be shown are so at its
/// end.
class CollectedLibraryCall {
 public:
  /// What has been printed is in `printed` at the end.
  explicit CollectedLibraryCall(std::string& printed);
  ~CollectedLibraryCall();
  CollectedLibraryCall(const CollectedLibraryCall&) = delete;
  CollectedLibraryCall& operator=(const CollectedLibraryCall&) = delete;

 private:
  std::string& printed_;
  int collection_;
  int standard_error_ = -1;
};

/// What a function of the library returned, errno, and what it printed.
struct LibraryAnswer {
  int value = -1;
  int error = 0;
  std::string printed;
};

template <typename Function>
LibraryAnswer AskLibrary(const Function& function) {
  LibraryAnswer answer;
  {
    const CollectedLibraryCall call(answer.printed);
    answer.value = function();
    answer.error = errno;
  }
  return answer;
}

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_LIBRARY_DIAGNOSTICS_H
