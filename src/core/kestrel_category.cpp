// SPDX-License-Identifier: Apache-2.0
#include "core/kestrel_category.h"

#include "core/decimal_message.h"

namespace kestrel {

const char* KestrelErrorCategoryImpl::name() const { return "Kestrel Error"; }

eastl::string KestrelErrorCategoryImpl::message(int code) const { return DecimalMessage(code); }

const KestrelErrorCategoryImpl& kestrel_category() {
  static const KestrelErrorCategoryImpl instance;
  return instance;
}

}  // namespace kestrel
