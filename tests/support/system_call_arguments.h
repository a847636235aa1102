// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_SYSTEM_CALL_ARGUMENTS_H
#define KESTREL_TESTS_SUPPORT_SYSTEM_CALL_ARGUMENTS_H

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace kestrel::test {

using Environment = std::map<std::string, std::string>;  ///< added to this process's environment

/// Takes the words NAME=VALUE before a program off its command, as a shell does. env would do the
/// same, as one more program to start.
Environment TakeAssignments(std::vector<std::string>& command);

/// This process's environment with what is added to it.
std::vector<std::string> Merged(const Environment& added);

/// The arguments or the environment of a program, as it is started with them. They must outlive the
/// result.
std::vector<char*> Pointers(std::vector<std::string>& texts);

/// The time that is left, as poll takes it; 0 after the deadline.
int MillisecondsUntil(std::chrono::steady_clock::time_point deadline);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_SYSTEM_CALL_ARGUMENTS_H
