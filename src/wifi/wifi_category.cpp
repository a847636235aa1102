// SPDX-License-Identifier: Apache-2.0
#include "wifi/wifi_category.h"

#include "core/decimal_message.h"

namespace wifi {

const char* WifiErrorCategoryImpl::name() const { return "Wifi"; }

eastl::string WifiErrorCategoryImpl::message(int code) const {
  return kestrel::DecimalMessage(code);
}

const WifiErrorCategoryImpl& wifi_category() {
  static const WifiErrorCategoryImpl instance;
  return instance;
}

}  // namespace wifi
