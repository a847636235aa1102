// SPDX-License-Identifier: Apache-2.0
#ifndef EASTL_STD_SHARED_PTR_H
#define EASTL_STD_SHARED_PTR_H

#include <memory>

namespace eastl {

using std::atomic_exchange;
using std::atomic_load;
using std::atomic_store;
using std::make_shared;
using std::shared_ptr;

}  // namespace eastl

#endif  // EASTL_STD_SHARED_PTR_H
