// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_WIFI_FAILURE_H
#define KESTREL_TOOLS_KESTRELCTL_WIFI_FAILURE_H

#include <string>
#include <vector>

#include "failure.h"
#include "library_diagnostics.h"

namespace kestrelctl {

/// Reports what a Wi-Fi function failed at. What EIO means depends on what the library has printed;
/// `meanings` are those of other errors, where they have one that they do not have everywhere.
/// Returns kFailed.
int ReportWifiFailure(const std::string& what, const LibraryAnswer& answer,
                      const std::vector<Meaning>& meanings = {});

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_WIFI_FAILURE_H
