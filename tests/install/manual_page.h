// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_INSTALL_MANUAL_PAGE_H
#define KESTREL_TESTS_INSTALL_MANUAL_PAGE_H

#include <map>
#include <set>
#include <string>

namespace kestrel::test {

/// The text of a file; throws when it cannot be read.
std::string Content(const std::string& file);

/// The text with every run of blanks and line ends as one space.
std::string Unfolded(const std::string& text);

/// Every match of the first group of a regular expression.
std::set<std::string> FirstGroups(const std::string& text, const char* pattern);

/// The comment before each exported function that the headers of a directory declare, unfolded.
std::map<std::string, std::string> FunctionComments(const std::string& header_directory);

/// What lies between a line of a manual page that begins with `macro`, has `words` among its
/// arguments, and the next line that begins with the same macro. Empty when there is none.
std::string BlockOf(const std::string& page, const std::string& macro, const std::string& words);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_INSTALL_MANUAL_PAGE_H
