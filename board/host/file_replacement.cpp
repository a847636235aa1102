// SPDX-License-Identifier: Apache-2.0
#include "host/file_replacement.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "host/unique_fd.h"

namespace kestrel::board {

bool WriteAll(int file, const std::string& content) {
  size_t done = 0;
  while (done < content.size()) {
    const ssize_t count = write(file, content.data() + done, content.size() - done);
    if (count < 0 && errno != EINTR) {
      return false;
    }
    done += count < 0 ? 0 : static_cast<size_t>(count);
  }
  return true;
}

bool ReplaceFile(const std::string& path, const std::string& content, mode_t mode) {
  const std::string complete = path + kReplacementSuffix;
  // One that is left over may be readable for more users than this one is to be.
  unlink(complete.c_str());
  const UniqueFd file(open(complete.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
  if (!file.valid()) {
    return false;
  }
  if (WriteAll(file.get(), content) && rename(complete.c_str(), path.c_str()) == 0) {
    return true;
  }
  const int saved_errno = errno;
  unlink(complete.c_str());
  errno = saved_errno;
  return false;
}

}  // namespace kestrel::board
