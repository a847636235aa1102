// SPDX-License-Identifier: Apache-2.0
#include "support/system_call_arguments.h"

#include <algorithm>

namespace kestrel::test {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

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
