// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_COMMAND_FILTER_H
#define KESTREL_RELAY_COMMAND_FILTER_H

#include <string_view>

namespace kestrel::relay {

enum class Verdict {
  kAllowed,
  kUnknownCommand,  ///< the library has no command of that name
  kOtherForm,       ///< the library sends that command, but not with such arguments
};

/// Whether a command, without its terminating NUL, is one that the library sends. The supplicant's
/// control interface can do far more than the library needs: load code, read files, end the
/// supplicant.
Verdict Judge(std::string_view command);

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_COMMAND_FILTER_H
