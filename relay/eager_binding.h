// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_EAGER_BINDING_H
#define KESTREL_RELAY_EAGER_BINDING_H

namespace kestrel::relay {

/// Starts this program anew with the calls of all its libraries bound; returns when they are.
///
/// What looks a function up at its first call saves the vector registers on the stack, in which the
/// copying of a passphrase has left parts of it. The linker can prevent that for the program's own
/// calls, and for those of the C++ library the environment alone. A program that the kernel cannot
/// start goes on as it is.
void BindAllCalls(char** arguments);

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_EAGER_BINDING_H
