// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_PASSPHRASE_SOURCE_H
#define KESTREL_TOOLS_KESTRELCTL_PASSPHRASE_SOURCE_H

#include <string>

#include "passphrase.h"

namespace kestrelctl {

// Each reports its failure, or what is wrong with the passphrase, before it returns false.

/// Reads the passphrase from a file; from standard input, which is no terminal, for "-".
bool ReadPassphrase(const std::string& file, Passphrase& passphrase);

/// Asks for it at the terminal that standard input is, without showing what is typed.
bool AskForPassphrase(const std::string& question, Passphrase& passphrase);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_PASSPHRASE_SOURCE_H
