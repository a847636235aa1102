// SPDX-License-Identifier: Apache-2.0
// The machine's drivers are reached through files: each line of its chip has a folder, in which
// what pulls the wire is written and what the chip does to it is read.
#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <linux/serial.h>
#include <pwd.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>
#include <utility>

#include "rigs.h"
#include "support/in_child.h"

namespace kestrel::test {
namespace {

constexpr char kLines[] = "/sys/kernel/debug/kestrel-lines/";
constexpr char kOrdinaryUser[] = "device";
constexpr char kSecurityConfig[] = "/run/security-device.conf";
/// The highest speed that the library knows.
constexpr int kBaseRate = 2000000;

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

/// A file that nobody but its owner may open, for the length of a scope.
class PrivateFile {
 public:
  explicit PrivateFile(std::string path) : path_(std::move(path)) {
    struct stat status {};
    if (stat(path_.c_str(), &status) != 0 || chmod(path_.c_str(), S_IRUSR | S_IWUSR) != 0) {
      throw std::runtime_error(path_ + ": " + strerror(errno));
    }
    mode_ = status.st_mode;
  }
  ~PrivateFile() { chmod(path_.c_str(), mode_); }
  PrivateFile(const PrivateFile&) = delete;
  PrivateFile& operator=(const PrivateFile&) = delete;

 private:
  std::string path_;
  mode_t mode_;
};

/// Tells the driver of a port what its crystal allows: speeds up to `rate`.
void SetBaseRate(uint32_t number, int rate) {
  const std::string path = PortPath(number);
  const int port = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  serial_struct settings{};
  bool done = ioctl(port, TIOCGSERIAL, &settings) == 0;
  settings.baud_base = rate;
  done = done && ioctl(port, TIOCSSERIAL, &settings) == 0;
  close(port);
  if (!done) {
    throw std::runtime_error(path + ": no base rate of " + std::to_string(rate));
  }
}

class MachineRig : public Rig {
 public:
  MachineRig() {
    SetBaseRate(kLeftPort, kBaseRate);
    SetBaseRate(kRightPort, kBaseRate);
  }

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

  int AsUserWhoMayNotOpen(const std::string& path, const std::function<int()>& body) override {
    const PrivateFile owner_only(path);
    return InChild([&body] { return Become(kOrdinaryUser) ? body() : 255; });
  }

  void SlowDownPort(uint32_t number) override { SetBaseRate(number, 115200); }
  void SpeedUpPort(uint32_t number) override { SetBaseRate(number, kBaseRate); }

  void FailSecurityRequests(int error) override {
    WriteFile(kSecurityConfig, "errno " + std::to_string(error) + "\n");
  }

  void RemoveNode(const std::string& path) override {
    if (unlink(path.c_str()) != 0) {
      throw std::runtime_error(path + ": " + strerror(errno));
    }
  }

  void MendSecurityDevice() override {
    WriteFile(kSecurityConfig, "identifier " + std::string(kDeviceIdentifier) + "\n");
  }

  void WriteNetworkStatus(const std::string& hex) override {
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
      bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    WriteFile(kNetworkStatusPath, bytes);
  }

  void RemoveNetworkStatus() override { unlink(kNetworkStatusPath); }
};

}  // namespace

std::unique_ptr<Rig> MakeMachineRig() { return std::make_unique<MachineRig>(); }

}  // namespace kestrel::test
