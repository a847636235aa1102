// SPDX-License-Identifier: Apache-2.0
#include "devices/network/network_status.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>

#include "host/error.h"
#include "host/file_replacement.h"
#include "host/hex_text.h"

namespace kestrel::board::network {
namespace {

using Bytes = std::vector<uint8_t>;

struct NamedStatus {
  const char* name;
  Status status;
};

const std::vector<NamedStatus>& NamedStatuses() {
  static const std::vector<NamedStatus> statuses = {
      {"ready", Bytes{1, 1, 1, 1, 1}}, {"down", Bytes{0, 0, 0, 0, 0}}, {"absent", std::nullopt}};
  return statuses;
}

/// The content that "bytes" or "bytes HEX" stands for.
std::optional<Bytes> ParseBytes(const std::string& text) {
  const std::string word = "bytes";
  if (text.compare(0, word.size(), word) != 0) {
    return std::nullopt;
  }
  const std::string rest = text.substr(word.size());
  if (!rest.empty() && rest[0] != ' ') {
    return std::nullopt;
  }
  // With or without blanks between the bytes, as `show` prints them.
  std::string digits = rest;
  digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
  std::optional<Bytes> bytes = FromHex(digits);
  return bytes.has_value() && bytes->size() <= kLongestStatus ? bytes : std::nullopt;
}

/// The flags that must not be zero. What a short file lacks is zero.
constexpr size_t kReadyFlags[] = {0, 2, 3, 4};

}  // namespace

std::string CheckStatus(const std::string& text) {
  for (const NamedStatus& known : NamedStatuses()) {
    if (text == known.name) {
      return "";
    }
  }
  return ParseBytes(text).has_value()
             ? ""
             : "must be ready, down, absent, or bytes and up to " + std::to_string(kLongestStatus) +
                   " of them in hexadecimal, such as bytes 0100010101";
}

Status ParseStatus(const std::string& text) {
  for (const NamedStatus& known : NamedStatuses()) {
    if (text == known.name) {
      return known.status;
    }
  }
  return ParseBytes(text);
}

bool IsReady(const Status& status) {
  return status.has_value() &&
         std::all_of(std::begin(kReadyFlags), std::end(kReadyFlags),
                     [&](size_t flag) { return flag < status->size() && (*status)[flag] != 0; });
}

StatusFile::StatusFile(const std::string& folder, const Status& status)
    : path_(folder + "/" + kStatusFile) {
  Write(status);
}

void StatusFile::Write(const Status& status) const {
  if (!status.has_value()) {
    if (unlink(path_.c_str()) != 0 && errno != ENOENT) {
      ThrowErrno(path_);
    }
    return;
  }
  constexpr mode_t kMode = 0666;
  if (!ReplaceFile(path_, std::string(status->begin(), status->end()), kMode)) {
    ThrowErrno(path_);
  }
}

Status StatusFile::Read() const {
  std::ifstream file(path_, std::ios::binary);
  if (!file) {
    return std::nullopt;
  }
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

}  // namespace kestrel::board::network
