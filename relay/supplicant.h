// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_SUPPLICANT_H
#define KESTREL_RELAY_SUPPLICANT_H

#include <memory>
#include <string>
#include <utility>

#include "limited_log.h"
#include "supplicant_link.h"

namespace kestrel::relay {

/// The supplicant as all clients see it. Tells the log when it goes and when it comes back, once
/// each, however often clients ask.
class Supplicant {
 public:
  Supplicant(std::string path, std::string client_folder, LimitedLog& log)
      : path_(std::move(path)), client_folder_(std::move(client_folder)), log_(log) {}

  /// Null when the supplicant cannot be reached.
  std::unique_ptr<SupplicantLink> Open();

  void NoteAnswer();
  void NoteLoss(const std::string& reason);

 private:
  std::string path_;
  std::string client_folder_;
  LimitedLog& log_;
  bool lost_ = false;
};

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_SUPPLICANT_H
