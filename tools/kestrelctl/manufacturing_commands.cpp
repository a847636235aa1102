// SPDX-License-Identifier: Apache-2.0
#include <kestrel/manufacturing.h>

#include <cerrno>
#include <nlohmann/json.hpp>
#include <string>

#include "command_groups.h"
#include "failure.h"
#include "family_command.h"
#include "library_diagnostics.h"
#include "output.h"

namespace kestrelctl {
namespace {

int PrintDeviceId(Format format) {
  std::string id(Manufacturing_GetDeviceIdSize(), '\0');
  if (CallLibrary([&] { return Manufacturing_GetDeviceId(id.data(), id.size()); }) < 0) {
    return ReportFailure(
        "device identifier",
        {{EACCES, "the security device is missing or does not tell; --verbose shows which"}});
  }
  id.pop_back();
  const std::string text = format == Format::kText ? id : nlohmann::json{{"device_id", id}}.dump();
  return Print(text + "\n") ? kDone : kFailed;
}

}  // namespace

void AddManufacturingCommands(CLI::App& program, Action& action) {
  const Prepare<CommonArguments> prepare = [](const CommonArguments& arguments) -> Action {
    return [format = arguments.format()] { return PrintDeviceId(format); };
  };
  AddCommand(program, "device-id",
             "Print the identifier that the device was given when it was made",
             "  kestrelctl device-id\n"
             "  kestrelctl device-id --json",
             prepare, action);
}

}  // namespace kestrelctl
