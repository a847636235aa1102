// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_CORE_KESTREL_CATEGORY_H
#define KESTREL_CORE_KESTREL_CATEGORY_H

#include <nwl/error_category>

namespace kestrel {

/// Failures of the library itself, as opposed to those that a system call reported.
class KestrelErrorCategoryImpl : public nwl::error_category {
 public:
  const char* name() const override;
  eastl::string message(int code) const override;
};

const KestrelErrorCategoryImpl& kestrel_category();

}  // namespace kestrel

#endif  // KESTREL_CORE_KESTREL_CATEGORY_H
