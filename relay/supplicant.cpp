// SPDX-License-Identifier: Apache-2.0
#include "supplicant.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace kestrel::relay {
namespace {

/// What the link needs besides the supplicant is its folder.
std::string WhyNoLink(const std::string& client_folder, int error) {
  std::error_code unreadable;
  return std::filesystem::is_directory(client_folder, unreadable)
             ? strerror(error)
             : "the folder " + client_folder + " is missing";
}

}  // namespace

std::unique_ptr<SupplicantLink> Supplicant::Open() {
  std::unique_ptr<SupplicantLink> link = SupplicantLink::Open(path_, client_folder_);
  if (link == nullptr) {
    NoteLoss(WhyNoLink(client_folder_, errno));
  }
  return link;
}

void Supplicant::NoteAnswer() {
  if (lost_) {
    log_.Info(Topic::kSupplicant, "the supplicant at " + path_ + " answers again");
  }
  lost_ = false;
}

void Supplicant::NoteLoss(const std::string& reason) {
  if (!lost_) {
    log_.Warning(Topic::kSupplicant,
                 "the supplicant at " + path_ + " cannot be reached: " + reason);
  }
  lost_ = true;
}

}  // namespace kestrel::relay
