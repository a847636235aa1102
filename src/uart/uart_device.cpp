// SPDX-License-Identifier: Apache-2.0
#include "uart/uart_device.h"

#include <EASTL/string.h>
#include <errno.h>
#include <stdio.h>
#include <string.h>

#include "core/kept_errno.h"
#include "uart/line_settings.h"
#include "uart/open_errno.h"

namespace kestrel::uart {
namespace {

/// A driver may take a moment, or need another try, until it reports what it was given.
constexpr int kAttempts = 10;

// Settings are compared over all their bytes, so they must have none that nobody writes.
static_assert(sizeof(termios) == 60);
static_assert(NCCS == 32);

/// Prints what has just failed with errno as it stands.
void Report(const char* problem) {
  const KeptErrno kept;
  fprintf(stderr, "[Kestrel:UART] %s: %s (%d).\n", problem, strerror(kept.value()), kept.value());
}

/// Reports a failed step. One that failed without an errno is forgiven: the step counts as done.
bool IsForgiven(const char* problem) {
  Report(problem);
  return errno == 0;
}

/// Sets one after the other. Returns the first whose value is not recognised, or null.
const LineSetting* SetUntilUnrecognised(const UartConfigWrapper& config, termios* settings) {
  for (const LineSetting& setting : kLineSettings) {
    if (!setting.set(config.*setting.value, settings)) {
      return &setting;
    }
  }
  return nullptr;
}

bool SetLine(const UartConfigWrapper& config, termios* settings) {
  const LineSetting* const unrecognised = SetUntilUnrecognised(config, settings);
  if (unrecognised == nullptr) {
    return true;
  }
  const unsigned int value = config.*unrecognised->value;
  const KeptErrno kept;
  fprintf(stderr, "[Kestrel:UART] Unrecognised value '%u' for %s.\n", value, unrecognised->name);
  return false;
}

const uint8_t* BytesOf(const termios& settings) {
  return reinterpret_cast<const uint8_t*>(&settings);
}

int32_t Fail(int saved_errno) {
  errno = translateUartOpenErrno(saved_errno);
  return -1;
}

}  // namespace

int32_t UartDevice::Open(uint32_t uart_id, const UartConfigWrapper& config) {
  if (fd_ >= 0) {
    fputs("[Kestrel:UART] Internal error opening device.\n", stderr);
    errno = EIO;
    return Fail(EIO);
  }
  if (!OpenNode(uart_id) || !Lock()) {
    return Fail(errno);
  }
  if (!Configure(config)) {
    const int saved_errno = errno;
    Close("Error closing device");
    return Fail(saved_errno);
  }
  return fd_;
}

bool UartDevice::OpenNode(uint32_t uart_id) {
  const eastl::string path(eastl::string::CtorSprintf(), "/dev/ttyS%d", static_cast<int>(uart_id));
  fd_ = syscalls_->Open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
  if (fd_ < 0) {
    fd_ = -1;
    Report("Unable to open device");
    return false;
  }
  return true;
}

bool UartDevice::Lock() {
  if (syscalls_->Lock(fd_, LOCK_EX | LOCK_NB) == 0) {
    return true;
  }
  const KeptErrno kept;
  Report("Unable to open device exclusively");
  // Not the words of the other close: who reads the output can tell the two apart.
  Close("Error closing the device");
  return false;
}

bool UartDevice::Configure(const UartConfigWrapper& config) {
  termios settings;
  memset(&settings, 0, sizeof settings);
  if (syscalls_->GetAttributes(fd_, &settings) != 0 &&
      !IsForgiven("Unable to get attributes of device")) {
    return false;
  }
  MakeRaw(&settings);
  return SetSpeed(config.speed, &settings) && SetLine(config, &settings) && SetNonBlocking() &&
         ApplyAndConfirm(settings);
}

bool UartDevice::SetSpeed(speed_t speed, termios* settings) const {
  if (syscalls_->SetOutputSpeed(settings, speed) != 0) {
    // Forgiven or not, the input's speed is then left as it was.
    return IsForgiven("Unable to set output speed of UART");
  }
  return syscalls_->SetInputSpeed(settings, speed) == 0 ||
         IsForgiven("Unable to set input speed of UART");
}

bool UartDevice::SetNonBlocking() const {
  return syscalls_->SetStatusFlags(fd_, O_NONBLOCK) == 0 ||
         IsForgiven("Unable to set device to non-blocking");
}

bool UartDevice::ApplyAndConfirm(const termios& settings) const {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (syscalls_->SetAttributes(fd_, settings) != 0) {
      return IsForgiven("Unable to set attributes of device");
    }
    termios confirmed;
    memset(&confirmed, 0, sizeof confirmed);
    if (syscalls_->GetAttributes(fd_, &confirmed) != 0) {
      return IsForgiven("Unable to confirm attributes of device");
    }
    if (memcmp(BytesOf(confirmed), BytesOf(settings), sizeof settings) == 0) {
      return true;
    }
  }
  const KeptErrno kept;
  fputs("[Kestrel:UART] Could not set the attributes of the device.\n", stderr);
  return false;
}

void UartDevice::Close(const char* problem) {
  if (syscalls_->Close(fd_) != 0) {
    Report(problem);
  }
  fd_ = -1;
}

}  // namespace kestrel::uart
