// SPDX-License-Identifier: Apache-2.0
#ifndef EASTL_STD_FUNCTIONAL_H
#define EASTL_STD_FUNCTIONAL_H

#include <functional>

namespace eastl {

template <typename T>
struct hash : std::hash<T> {};

// EASTL hashes the text behind these pointers, the standard library the address.
template <>
struct hash<char*>;
template <>
struct hash<const char*>;

}  // namespace eastl

#endif  // EASTL_STD_FUNCTIONAL_H
