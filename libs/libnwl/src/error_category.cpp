// SPDX-License-Identifier: Apache-2.0
#include <nwl/error_category>

#include <string.h>

namespace nwl {

const char* GenericErrorCategory::name() const { return "generic"; }

eastl::string GenericErrorCategory::message(int code) const { return strerror(code); }

const GenericErrorCategory& generic_category() {
  static const GenericErrorCategory instance;
  return instance;
}

}  // namespace nwl
