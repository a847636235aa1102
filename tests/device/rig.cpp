// SPDX-License-Identifier: Apache-2.0
#include "rig.h"

#include <cstdlib>
#include <stdexcept>

#include "rigs.h"

namespace kestrel::test {
namespace {

std::unique_ptr<Rig> MakeRig() {
  const char* chosen = getenv("KESTREL_RIG");
  const std::string name = chosen == nullptr ? "board" : chosen;
  if (name == "board") {
    return MakeBoardRig();
  }
  if (name == "machine") {
    return MakeMachineRig();
  }
  throw std::runtime_error("KESTREL_RIG must be board or machine, not " + name);
}

}  // namespace

void PrintTo(const LineOutside& line, std::ostream* stream) {
  *stream << line.level << ' ' << line.direction << ' ' << line.drive;
}

Rig& TheRig() {
  static const std::unique_ptr<Rig> rig = MakeRig();
  return *rig;
}

}  // namespace kestrel::test
