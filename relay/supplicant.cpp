// SPDX-License-Identifier: Apache-2.0
#include "supplicant.h"

#include <cerrno>
#include <cstring>

namespace kestrel::relay {

std::unique_ptr<SupplicantLink> Supplicant::Open() {
  std::unique_ptr<SupplicantLink> link = SupplicantLink::Open(path_, client_folder_);
  if (link == nullptr) {
    NoteLoss(strerror(errno));
  }
  return link;
}

void Supplicant::NoteAnswer() {
  if (lost_) {
    log_.Info("the supplicant at " + path_ + " answers again");
  }
  lost_ = false;
}

void Supplicant::NoteLoss(const std::string& reason) {
  if (!lost_) {
    log_.Warning("the supplicant at " + path_ + " cannot be reached: " + reason);
  }
  lost_ = true;
}

}  // namespace kestrel::relay
