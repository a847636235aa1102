// SPDX-License-Identifier: Apache-2.0
// The machine's drivers are reached through files: each line of its chip has a folder, in which
// what pulls the wire is written and what the chip does to it is read.
#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <linux/serial.h>
#include <pwd.h>
#include <signal.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "board/wifi_client.h"
#include "board/wifi_exports.h"
#include "rigs.h"
#include "support/in_child.h"
#include "support/run_program.h"

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

/// Where a device node lies while it is taken away.
std::string Away(const std::string& path) { return path + ".away"; }

/// Runs the machine's own command for its daemons.
void Wifi(const std::vector<std::string>& words) {
  std::vector<std::string> arguments = {"wifi"};
  arguments.insert(arguments.end(), words.begin(), words.end());
  const ProgramResult result = RunProgram(arguments);
  if (result.status != 0) {
    throw std::runtime_error("wifi: " + result.standard_error);
  }
}

void StartIfGone(const std::string& daemon) {
  if (access(("/run/" + daemon + ".pid").c_str(), F_OK) != 0) {
    Wifi({"start", daemon});
  }
}

/// Waits until a command gets through the relay to the supplicant and back.
void AwaitWifiAnswer() {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (WifiClient(kWifiSocketPath).Ask("STATUS").find("wpa_state=") == std::string::npos) {
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error("the Wi-Fi daemons do not answer");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

void SignalSupplicant(int number) { kill(std::stoi(ReadWord("/run/supplicant.pid")), number); }

/// Lets a port hand on what has come when its FIFO is nearly full: each time takes an emulator
/// long.
void FillFifo(uint32_t number) {
  WriteFile("/sys/class/tty/ttyS" + std::to_string(number) + "/rx_trig_bytes", "14\n");
}

class MachineRig : public Rig {
 public:
  MachineRig() {
    for (const uint32_t port : {kLeftPort, kRightPort}) {
      SetBaseRate(port, kBaseRate);
      FillFifo(port);
    }
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
    WriteFile(kSecurityConfig, "result " + std::to_string(-error) + "\n");
  }

  void RemoveNode(const std::string& path) override {
    if (rename(path.c_str(), Away(path).c_str()) != 0) {
      throw std::runtime_error(path + ": " + strerror(errno));
    }
  }

  void MendSecurityDevice() override {
    WriteFile(kSecurityConfig, "identifier " + std::string(kDeviceIdentifier) + "\n");
    for (const std::string path : {kWardenPath, kLodestonePath}) {
      rename(Away(path).c_str(), path.c_str());
    }
  }

  void WriteNetworkStatus(const std::string& hex) override {
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
      bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    WriteFile(kNetworkStatusPath, bytes);
  }

  void RemoveNetworkStatus() override { unlink(kNetworkStatusPath); }

  void ResetWifi() override {
    StartIfGone("supplicant");
    StartWifiDaemon();
    RemoveAllNetworks();
  }

  void StopWifiDaemon() override { Wifi({"kill", "relay"}); }
  void StartWifiDaemon() override {
    SignalSupplicant(SIGCONT);
    StartIfGone("relay");
    AwaitWifiAnswer();
  }

  void KillSupplicant() override { Wifi({"kill", "supplicant"}); }
  void StartSupplicant() override {
    StartIfGone("supplicant");
    AwaitWifiAnswer();
  }

  void FreezeWifiDaemon() override { SignalSupplicant(SIGSTOP); }
};

}  // namespace

std::unique_ptr<Rig> MakeMachineRig() { return std::make_unique<MachineRig>(); }

}  // namespace kestrel::test
