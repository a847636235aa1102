// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_WIFI_CATEGORY_H
#define KESTREL_WIFI_WIFI_CATEGORY_H

#include <nwl/error_category>

namespace wifi {

/// Failures of the Wi-Fi daemon's control socket and of its replies.
class WifiErrorCategoryImpl : public nwl::error_category {
 public:
  const char* name() const override;
  eastl::string message(int code) const override;
};

const WifiErrorCategoryImpl& wifi_category();

}  // namespace wifi

#endif  // KESTREL_WIFI_WIFI_CATEGORY_H
