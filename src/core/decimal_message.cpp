// SPDX-License-Identifier: Apache-2.0
#include "core/decimal_message.h"

namespace kestrel {

eastl::string DecimalMessage(int code) {
  return eastl::string(eastl::string::CtorSprintf(), "%d", code);
}

}  // namespace kestrel
