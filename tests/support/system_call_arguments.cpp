// SPDX-License-Identifier: Apache-2.0
#include "support/system_call_arguments.h"

#include <unistd.h>

#include <algorithm>

namespace kestrel::test {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

Environment TakeAssignments(std::vector<std::string>& command) {
  Environment assignments;
  auto word = command.begin();
  for (; word != command.end(); ++word) {
    // A path may have the sign as well.
    const size_t equals = word->find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ_");
    if (equals == std::string::npos || (*word)[equals] != '=') {
      break;
    }
    assignments[word->substr(0, equals)] = word->substr(equals + 1);
  }
  command.erase(command.begin(), word);
  return assignments;
}

std::vector<std::string> Merged(const Environment& added) {
  std::vector<std::string> merged;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (added.count(text.substr(0, text.find('='))) == 0) {
      merged.push_back(text);
    }
  }
  for (const auto& [name, value] : added) {
    merged.push_back(name);
    merged.back().append("=").append(value);
  }
  return merged;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

int MillisecondsUntil(Clock::time_point deadline) {
  const auto left = duration_cast<milliseconds>(deadline - Clock::now());
  return static_cast<int>(std::max<long long>(0, left.count()));
}

}  // namespace kestrel::test
