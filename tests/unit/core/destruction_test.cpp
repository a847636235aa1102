// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <kestrel/gpio.h>
#include <kestrel/log.h>
#include <kestrel/networking.h>
#include <kestrel/uart.h>
#include <kestrel/wificonfig.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>

#include "core/kestrel_category.h"
#include "wifi/wifi_category.h"

namespace {

std::atomic<int> g_registrations{0};

int GatherAndLog(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = Log_DebugVarArgs(fmt, args);
  va_end(args);
  return result;
}

struct FirstCall {
  const char* name;
  void (*call)();
};

/// Each of them is the first to need its singleton, because each runs in a process of its own.
class FirstCalls : public testing::TestWithParam<FirstCall> {
 protected:
  static int RegistrationsByCall() {
    const int before = g_registrations;
    GetParam().call();
    return g_registrations - before;
  }

  /// Ends the process with the registrations of a first call and those of two more as two digits.
  [[noreturn]] static void CallAndExit() {
    const int first = RegistrationsByCall();
    const int later = RegistrationsByCall() + RegistrationsByCall();
    _exit(10 * first + later);
  }
};

constexpr FirstCall kFirstCalls[] = {
    {"OutputWithoutMode", [] { GPIO_OpenAsOutput(0, 3, GpioLevel_Low); }},
    {"OutputWithoutLevel", [] { GPIO_OpenAsOutput(0, GpioDriveMode_PushPull, 2); }},
    {"SetWithoutLevel", [] { GPIO_SetValue(-1, 2); }},
    {"SetWithoutDescriptor", [] { GPIO_SetValue(-1, GpioLevel_Low); }},
    {"GetWithoutPlace", [] { GPIO_GetValue(-1, nullptr); }},
    {"LogWithoutFormat", [] { Log_Debug(nullptr); }},
    {"LogVarArgsWithoutFormat", [] { GatherAndLog(nullptr); }},
    {"InitConfigWithoutVersion", [] { z__UART_InitConfig(nullptr, 0); }},
    {"OpenWithoutConfig", [] { z__UART_Open(0, nullptr); }},
    {"NetworkingWithoutPlace", [] { Networking_IsNetworkingReady(nullptr); }},
    {"ScannedWithoutArray", [] { z__WifiConfig_GetScannedNetworks(nullptr, 1, 1); }},
    {"StoredWithoutArray", [] { z__WifiConfig_GetStoredNetworks(nullptr, 1, 1); }},
    {"StoreOpenWithoutName", [] { WifiConfig_StoreOpenNetwork(nullptr, 1); }},
    {"StoreWpa2WithoutName", [] { WifiConfig_StoreWpa2Network(nullptr, 1, nullptr, 1); }},
    {"CurrentWithoutRecord", [] { z__WifiConfig_GetCurrentNetwork(nullptr, 1); }},
    {"ForgetWithoutRecord", [] { z__WifiConfig_ForgetNetwork(nullptr); }},
    {"GenericCategory", [] { nwl::generic_category(); }},
    {"KestrelCategory", [] { kestrel::kestrel_category(); }},
    {"WifiCategory", [] { wifi::wifi_category(); }},
};

INSTANTIATE_TEST_SUITE_P(Each, FirstCalls, testing::ValuesIn(kFirstCalls),
                         [](const auto& test) { return test.param.name; });

TEST_P(FirstCalls, RegisterOneDestructionForGood) {
  EXPECT_EXIT(CallAndExit(), testing::ExitedWithCode(10), "^$");
}

}  // namespace

// NOLINTNEXTLINE(readability-redundant-declaration): g++ overlooks the one in <cxxabi.h>
extern "C" int __cxa_atexit(void (*function)(void*), void* object, void* library) noexcept;

extern "C" int __cxa_atexit(void (*function)(void*), void* object, void* library) noexcept {
  ++g_registrations;
  using Call = int (*)(void (*)(void*), void*, void*);
  return reinterpret_cast<Call>(dlsym(RTLD_NEXT, "__cxa_atexit"))(function, object, library);
}

/// No daemon is there to be connected to, whatever runs on this machine.
extern "C" int connect(int, const sockaddr*, socklen_t) {
  errno = ENOENT;
  return -1;
}
