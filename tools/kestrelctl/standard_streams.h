// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_STANDARD_STREAMS_H
#define KESTREL_TOOLS_KESTRELCTL_STANDARD_STREAMS_H

namespace kestrelctl {

/// Makes a lost reader of standard output a failed write, and keeps the descriptors of closed
/// standard streams from being given to lines, which would then get what is printed.
void PrepareStandardStreams();

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_STANDARD_STREAMS_H
