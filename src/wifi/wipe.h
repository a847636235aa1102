// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_WIPE_H
#define KESTREL_WIFI_WIPE_H

#include <EASTL/string.h>
#include <string.h>

#include "wifi/network.h"

namespace wifi {

/// Overwrites a text when the scope ends, so that a passphrase does not outlive the call in freed
/// memory. A text that grows leaves its old bytes behind: reserve enough beforehand.
class WipeAtEnd {
 public:
  explicit WipeAtEnd(eastl::string& text) : text_(text) {}
  ~WipeAtEnd() { explicit_bzero(text_.data(), text_.size()); }
  WipeAtEnd(const WipeAtEnd&) = delete;
  WipeAtEnd& operator=(const WipeAtEnd&) = delete;

 private:
  eastl::string& text_;
};

/// Overwrites the passphrase of a network that has one when the scope ends.
class WipePassphraseAtEnd {
 public:
  explicit WipePassphraseAtEnd(Network& network) : network_(network) {}
  ~WipePassphraseAtEnd() {
    const auto psk = network_.properties.find("psk");
    if (psk != network_.properties.end()) {
      const WipeAtEnd wipe(psk->second);
    }
  }
  WipePassphraseAtEnd(const WipePassphraseAtEnd&) = delete;
  WipePassphraseAtEnd& operator=(const WipePassphraseAtEnd&) = delete;

 private:
  Network& network_;
};

}  // namespace wifi

#endif  // KESTREL_WIFI_WIPE_H
