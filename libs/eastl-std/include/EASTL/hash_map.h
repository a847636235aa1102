// SPDX-License-Identifier: Apache-2.0
#ifndef EASTL_STD_HASH_MAP_H
#define EASTL_STD_HASH_MAP_H

#include <EASTL/functional.h>

#include <unordered_map>

namespace eastl {

template <typename Key, typename T, typename Hash = hash<Key>>
using hash_map = std::unordered_map<Key, T, Hash>;

}  // namespace eastl

#endif  // EASTL_STD_HASH_MAP_H
