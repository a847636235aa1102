// SPDX-License-Identifier: Apache-2.0
#include "log.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace kestrel::relay {
namespace {

constexpr size_t kLongestName = 32;

/// The service manager names the stream that it has connected; a redirection since leads elsewhere.
bool LeadsToJournal(int descriptor) {
  const char* const stream = getenv("JOURNAL_STREAM");
  struct stat file {};
  return stream != nullptr && fstat(descriptor, &file) == 0 &&
         std::to_string(file.st_dev) + ":" + std::to_string(file.st_ino) == stream;
}

/// A path may have any. A line that ends early looks like two, and terminals obey some.
bool IsControl(unsigned char character) { return character < ' ' || character == '\x7f'; }

bool IsPartOfName(char character) {
  return (character >= 'A' && character <= 'Z') || (character >= '0' && character <= '9') ||
         character == '_';
}

}  // namespace

Log::Log(bool verbose) : verbose_(verbose), to_journal_(LeadsToJournal(STDERR_FILENO)) {}

void Log::Write(int priority, const std::string& text) const {
  std::string line =
      to_journal_ ? "<" + std::to_string(priority) + ">" : std::string("kestrel-wifi-relay: ");
  line += text;
  std::replace_if(line.begin(), line.end(), IsControl, ' ');
  line += '\n';
  // In one piece, and nobody is there to be told when it fails.
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

std::string NameOf(std::string_view command) {
  // No copy of what may be a passphrase.
  const std::string_view name = command.substr(0, command.find(' '));
  const bool is_name = !name.empty() && name.size() <= kLongestName &&
                       std::all_of(name.begin(), name.end(), IsPartOfName);
  return is_name ? std::string(name) : "a command";
}

}  // namespace kestrel::relay
