// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_ABI_PROMISED_NAMES_H
#define KESTREL_TESTS_ABI_PROMISED_NAMES_H

#include <set>
#include <string>

namespace kestrel::test {

/// The names that a linker version script makes global.
std::set<std::string> GlobalNames(const std::string& version_script);

/// The functions that the headers of a directory declare with KESTREL_API.
std::set<std::string> DeclaredNames(const std::string& header_directory);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_ABI_PROMISED_NAMES_H
