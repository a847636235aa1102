// SPDX-License-Identifier: Apache-2.0
// The machine's drivers are reached through files: each line of its chip has a folder, in which
// what pulls the wire is written and what the chip does to it is read.
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "rigs.h"
#include "support/in_child.h"

namespace kestrel::test {
namespace {

constexpr char kLines[] = "/sys/kernel/debug/kestrel-lines/";
constexpr char kOrdinaryUser[] = "device";

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text << std::flush;
  if (!file) {
    throw std::runtime_error(path + ": cannot be written");
  }
}

std::string ReadWord(const std::string& path) {
  std::ifstream file(path);
  std::string word;
  if (!(file >> word)) {
    throw std::runtime_error(path + ": cannot be read");
  }
  return word;
}

std::string FileOfLine(int line, const std::string& name) {
  const std::string number = std::to_string(line);
  return kLines + std::string(number.size() < 2 ? 2 - number.size() : 0, '0') + number + "/" + name;
}

/// Takes another identity for the rest of the process; true when that worked.
bool Become(const char* name) {
  const passwd* user = getpwnam(name);
  return user != nullptr && setgroups(0, nullptr) == 0 && setgid(user->pw_gid) == 0 &&
         setuid(user->pw_uid) == 0;
}

class MachineRig : public Rig {
 public:
  bool HasRealParts() const override { return true; }

  void DriveLine(int line, GpioLevel level) override {
    WriteFile(FileOfLine(line, "pull"), level == GpioLevel_High ? "1\n" : "0\n");
  }

  LineOutside LookAtLine(int line) override {
    LineOutside seen;
    seen.level = ReadWord(FileOfLine(line, "value")) == "1" ? "high" : "low";
    seen.direction = ReadWord(FileOfLine(line, "direction")) == "out" ? "output" : "input";
    seen.drive = ReadWord(FileOfLine(line, "drive"));
    return seen;
  }

  int AsUserWhoMayNotOpen(const std::string& /*path*/, const std::function<int()>& body) override {
    return InChild([&body] { return Become(kOrdinaryUser) ? body() : 255; });
  }
};

}  // namespace

std::unique_ptr<Rig> MakeMachineRig() { return std::make_unique<MachineRig>(); }

}  // namespace kestrel::test
