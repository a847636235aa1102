// SPDX-License-Identifier: Apache-2.0
#ifndef EASTL_STD_VECTOR_H
#define EASTL_STD_VECTOR_H

#include <vector>

namespace eastl {

template <typename T>
using vector = std::vector<T>;

}  // namespace eastl

#endif  // EASTL_STD_VECTOR_H
