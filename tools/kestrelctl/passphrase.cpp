// SPDX-License-Identifier: Apache-2.0
#include "passphrase.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace kestrelctl {
namespace {

constexpr size_t kShortest = 8;
constexpr size_t kLongest = 63;

bool IsPrintable(char character) { return character >= 0x20 && character <= 0x7E; }

}  // namespace

Passphrase::~Passphrase() { explicit_bzero(text_.data(), text_.size()); }

long Passphrase::ReadSome(int descriptor) {
  const size_t room = text_.size() - 1 - size_;
  const ssize_t count = read(descriptor, text_.data() + size_, room);
  size_ += static_cast<size_t>(std::max<ssize_t>(count, 0));
  return count;
}

bool Passphrase::ReadFile(int descriptor) {
  long count = 1;
  while (count > 0) {
    count = ReadSome(descriptor);
  }
  DropLineEnd();
  return count == 0;
}

bool Passphrase::ReadLine(int terminal) {
  const long count = ReadSome(terminal);
  DropLineEnd();
  return count >= 0;
}

void Passphrase::DropLineEnd() {
  for (const char end : {'\n', '\r'}) {
    if (size_ > 0 && text_[size_ - 1] == end) {
      text_[--size_] = '\0';
    }
  }
}

bool Passphrase::IsValid() const {
  return size_ >= kShortest && size_ <= kLongest &&
         std::all_of(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(size_),
                     IsPrintable);
}

}  // namespace kestrelctl
