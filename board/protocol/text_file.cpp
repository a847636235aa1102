// SPDX-License-Identifier: Apache-2.0
#include "protocol/text_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "host/file_replacement.h"
#include "protocol/wire.h"

namespace kestrel::board::wire {

UniqueFd MakeTextFile(const std::string& text) {
  if (text.size() > kTextLimit) {
    errno = EFBIG;
    return UniqueFd();
  }
  UniqueFd file(memfd_create("kestrel-board", MFD_CLOEXEC));
  return file.valid() && WriteAll(file.get(), text) ? std::move(file) : UniqueFd();
}

bool ReadTextFile(int file, std::string* text) {
  struct stat status {};
  if (fstat(file, &status) != 0) {
    return false;
  }
  // Anything else could let the reader wait.
  if (!S_ISREG(status.st_mode)) {
    errno = EINVAL;
    return false;
  }
  if (status.st_size > static_cast<off_t>(kTextLimit)) {
    errno = EFBIG;
    return false;
  }
  text->resize(static_cast<size_t>(status.st_size));
  size_t done = 0;
  ssize_t count = 1;
  while (done < text->size() && count > 0) {
    count = pread(file, text->data() + done, text->size() - done, static_cast<off_t>(done));
    done += count > 0 ? static_cast<size_t>(count) : 0;
  }
  text->resize(done);
  return count >= 0;
}

}  // namespace kestrel::board::wire
