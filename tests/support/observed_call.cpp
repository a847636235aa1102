// SPDX-License-Identifier: Apache-2.0
#include "support/observed_call.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "support/descriptors.h"

namespace kestrel::test {
namespace {

/// Sends descriptor 2 into a memory file for the length of a scope.
class StandardErrorCapture {
 public:
  StandardErrorCapture() : file_(memfd_create("stderr", MFD_CLOEXEC)), saved_(dup(STDERR_FILENO)) {
    fflush(stderr);
    if (file_ < 0 || saved_ < 0 || dup2(file_, STDERR_FILENO) < 0) {
      abort();
    }
  }
  ~StandardErrorCapture() {
    dup2(saved_, STDERR_FILENO);
    close(saved_);
    close(file_);
  }
  StandardErrorCapture(const StandardErrorCapture&) = delete;
  StandardErrorCapture& operator=(const StandardErrorCapture&) = delete;

  std::string Text() const {
    std::string text(static_cast<size_t>(lseek(file_, 0, SEEK_END)), '\0');
    if (pread(file_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
      abort();
    }
    return text;
  }

 private:
  int file_;
  int saved_;
};

std::set<int> Difference(const std::set<int>& left, const std::set<int>& right) {
  std::set<int> difference;
  std::set_difference(left.begin(), left.end(), right.begin(), right.end(),
                      std::inserter(difference, difference.end()));
  return difference;
}

void Print(std::ostream& stream, const char* name, const std::set<int>& descriptors) {
  stream << ", " << name << " {";
  for (const int descriptor : descriptors) {
    stream << ' ' << descriptor;
  }
  stream << " }";
}

}  // namespace

Observed Observe(const std::function<int()>& function) {
  const StandardErrorCapture capture;
  const std::set<int> before = OpenDescriptors();
  errno = kUntouched;
  const int result = function();
  const int error = errno;
  const std::set<int> after = OpenDescriptors();
  return {result, error, capture.Text(), Difference(after, before), Difference(before, after)};
}

std::ostream& operator<<(std::ostream& stream, const Observed& observed) {
  stream << "result " << observed.result << ", errno " << observed.error << ", stderr \""
         << observed.standard_error << '"';
  Print(stream, "opened", observed.new_descriptors);
  Print(stream, "closed", observed.lost_descriptors);
  return stream;
}

}  // namespace kestrel::test
