// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_CORE_DECIMAL_MESSAGE_H
#define KESTREL_CORE_DECIMAL_MESSAGE_H

#include <EASTL/string.h>

namespace kestrel {

/// The message of every category whose codes have no text of their own: the signed decimal number.
eastl::string DecimalMessage(int code);

}  // namespace kestrel

#endif  // KESTREL_CORE_DECIMAL_MESSAGE_H
