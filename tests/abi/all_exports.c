/* SPDX-License-Identifier: Apache-2.0 */
/* Compiled as C11 and as C++11: every type, constant and function that applications are compiled
 * against. What does not compile or fails here would break them. */
#include <assert.h>
#include <errno.h>
#include <kestrel/kestrel.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdio.h>

static_assert(sizeof(GpioLineId) == 4, "GpioLineId has 32 bits");
static_assert((GpioLineId)-1 < 0, "GpioLineId is signed");
static_assert(sizeof(GpioDriveMode) == 4, "GpioDriveMode has 32 bits");
static_assert((GpioDriveMode)-1 > 0, "GpioDriveMode is unsigned");
static_assert(GpioDriveMode_PushPull == 0, "GpioDriveMode_PushPull");
static_assert(GpioDriveMode_OpenDrain == 1, "GpioDriveMode_OpenDrain");
static_assert(GpioDriveMode_OpenSource == 2, "GpioDriveMode_OpenSource");
static_assert(sizeof(GpioLevel) == 1, "GpioLevel has 8 bits");
static_assert((GpioLevel)-1 > 0, "GpioLevel is unsigned");
static_assert(GpioLevel_Low == 0, "GpioLevel_Low");
static_assert(GpioLevel_High == 1, "GpioLevel_High");

static_assert(UART_CONFIG_VERSION == 1, "UART_CONFIG_VERSION");
static_assert(sizeof(UartBlockingMode) == 1, "UartBlockingMode has 8 bits");
static_assert((UartBlockingMode)-1 > 0, "UartBlockingMode is unsigned");
static_assert(UartBlockingMode_NonBlocking == 0, "UartBlockingMode_NonBlocking");
static_assert(sizeof(UartDataBits) == 1, "UartDataBits has 8 bits");
static_assert((UartDataBits)-1 > 0, "UartDataBits is unsigned");
static_assert(UartDataBits_Eight == 8, "UartDataBits_Eight");
static_assert(sizeof(UartParity) == 1, "UartParity has 8 bits");
static_assert((UartParity)-1 > 0, "UartParity is unsigned");
static_assert(UartParity_None == 0, "UartParity_None");
static_assert(sizeof(UartStopBits) == 1, "UartStopBits has 8 bits");
static_assert((UartStopBits)-1 > 0, "UartStopBits is unsigned");
static_assert(UartStopBits_One == 1, "UartStopBits_One");
static_assert(sizeof(UartFlowControl) == 1, "UartFlowControl has 8 bits");
static_assert((UartFlowControl)-1 > 0, "UartFlowControl is unsigned");
static_assert(UartFlowControl_None == 0, "UartFlowControl_None");
static_assert(UartFlowControl_RtsCts == 1, "UartFlowControl_RtsCts");
static_assert(UartFlowControl_XonXoff == 2, "UartFlowControl_XonXoff");
static_assert(sizeof(UartConfigRecord) == 16, "UartConfigRecord has 16 bytes");
static_assert(offsetof(UartConfigRecord, versionTag) == 0, "versionTag");
static_assert(sizeof(((UartConfigRecord*)0)->versionTag) == 4, "versionTag");
static_assert(offsetof(UartConfigRecord, baudRate) == 4, "baudRate");
static_assert(sizeof(((UartConfigRecord*)0)->baudRate) == 4, "baudRate");
static_assert(offsetof(UartConfigRecord, blockingMode) == 8, "blockingMode");
static_assert(offsetof(UartConfigRecord, dataBits) == 9, "dataBits");
static_assert(offsetof(UartConfigRecord, parity) == 10, "parity");
static_assert(offsetof(UartConfigRecord, stopBits) == 11, "stopBits");
static_assert(offsetof(UartConfigRecord, flowControl) == 12, "flowControl");

static_assert(sizeof(WifiSecurity) == 1, "WifiSecurity has 8 bits");
static_assert((WifiSecurity)-1 > 0, "WifiSecurity is unsigned");
static_assert(WifiSecurity_Unknown == 0, "WifiSecurity_Unknown");
static_assert(WifiSecurity_Open == 1, "WifiSecurity_Open");
static_assert(WifiSecurity_Wpa2Psk == 2, "WifiSecurity_Wpa2Psk");
static_assert(WifiConfig_StructVersion == 1, "WifiConfig_StructVersion");
static_assert(WifiScannedNetworkRecord_Complete == 0x7EB10001, "WifiScannedNetworkRecord");
static_assert(WifiStoredNetworkRecord_Complete == 0xB22E0001, "WifiStoredNetworkRecord");
static_assert(WifiCurrentNetworkRecord_Complete == 0x09EF0001, "WifiCurrentNetworkRecord");
static_assert(sizeof(WifiScannedNetworkRecord) == 52, "WifiScannedNetworkRecord has 52 bytes");
static_assert(offsetof(WifiScannedNetworkRecord, recordTag) == 0, "recordTag");
static_assert(sizeof(((WifiScannedNetworkRecord*)0)->recordTag) == 4, "recordTag");
static_assert(offsetof(WifiScannedNetworkRecord, ssid) == 4, "ssid");
static_assert(sizeof(((WifiScannedNetworkRecord*)0)->ssid) == 32, "ssid");
static_assert(offsetof(WifiScannedNetworkRecord, bssid) == 36, "bssid");
static_assert(sizeof(((WifiScannedNetworkRecord*)0)->bssid) == 6, "bssid");
static_assert(offsetof(WifiScannedNetworkRecord, ssidLength) == 42, "ssidLength");
static_assert(sizeof(((WifiScannedNetworkRecord*)0)->ssidLength) == 1, "ssidLength");
static_assert(offsetof(WifiScannedNetworkRecord, security) == 43, "security");
static_assert(sizeof(((WifiScannedNetworkRecord*)0)->security) == 1, "security");
static_assert(offsetof(WifiScannedNetworkRecord, frequencyMhz) == 44, "frequencyMhz");
static_assert(sizeof(((WifiScannedNetworkRecord*)0)->frequencyMhz) == 4, "frequencyMhz");
static_assert(offsetof(WifiScannedNetworkRecord, signalDbm) == 48, "signalDbm");
static_assert(sizeof(((WifiScannedNetworkRecord*)0)->signalDbm) == 1, "signalDbm");
static_assert(sizeof(WifiCurrentNetworkRecord) == 52, "WifiCurrentNetworkRecord has 52 bytes");
static_assert(offsetof(WifiCurrentNetworkRecord, recordTag) == 0, "recordTag");
static_assert(sizeof(((WifiCurrentNetworkRecord*)0)->recordTag) == 4, "recordTag");
static_assert(offsetof(WifiCurrentNetworkRecord, ssid) == 4, "ssid");
static_assert(sizeof(((WifiCurrentNetworkRecord*)0)->ssid) == 32, "ssid");
static_assert(offsetof(WifiCurrentNetworkRecord, bssid) == 36, "bssid");
static_assert(sizeof(((WifiCurrentNetworkRecord*)0)->bssid) == 6, "bssid");
static_assert(offsetof(WifiCurrentNetworkRecord, ssidLength) == 42, "ssidLength");
static_assert(sizeof(((WifiCurrentNetworkRecord*)0)->ssidLength) == 1, "ssidLength");
static_assert(offsetof(WifiCurrentNetworkRecord, security) == 43, "security");
static_assert(sizeof(((WifiCurrentNetworkRecord*)0)->security) == 1, "security");
static_assert(offsetof(WifiCurrentNetworkRecord, frequencyMhz) == 44, "frequencyMhz");
static_assert(sizeof(((WifiCurrentNetworkRecord*)0)->frequencyMhz) == 4, "frequencyMhz");
static_assert(offsetof(WifiCurrentNetworkRecord, signalDbm) == 48, "signalDbm");
static_assert(sizeof(((WifiCurrentNetworkRecord*)0)->signalDbm) == 1, "signalDbm");
static_assert(sizeof(WifiStoredNetworkRecord) == 40, "WifiStoredNetworkRecord has 40 bytes");
static_assert(offsetof(WifiStoredNetworkRecord, recordTag) == 0, "recordTag");
static_assert(sizeof(((WifiStoredNetworkRecord*)0)->recordTag) == 4, "recordTag");
static_assert(offsetof(WifiStoredNetworkRecord, ssid) == 4, "ssid");
static_assert(sizeof(((WifiStoredNetworkRecord*)0)->ssid) == 32, "ssid");
static_assert(offsetof(WifiStoredNetworkRecord, ssidLength) == 36, "ssidLength");
static_assert(sizeof(((WifiStoredNetworkRecord*)0)->ssidLength) == 1, "ssidLength");
static_assert(offsetof(WifiStoredNetworkRecord, enabled) == 37, "enabled");
static_assert(sizeof(((WifiStoredNetworkRecord*)0)->enabled) == 1, "enabled");
static_assert(offsetof(WifiStoredNetworkRecord, connected) == 38, "connected");
static_assert(sizeof(((WifiStoredNetworkRecord*)0)->connected) == 1, "connected");
static_assert(offsetof(WifiStoredNetworkRecord, security) == 39, "security");
static_assert(sizeof(((WifiStoredNetworkRecord*)0)->security) == 1, "security");

static int (*const log_debug)(const char*, ...) = Log_Debug;
static int (*const log_debug_var_args)(const char*, va_list) = Log_DebugVarArgs;
static int (*const open_as_output)(GpioLineId, GpioDriveMode, GpioLevel) = GPIO_OpenAsOutput;
static int (*const open_as_input)(GpioLineId) = GPIO_OpenAsInput;
static int (*const set_value)(int, GpioLevel) = GPIO_SetValue;
static int (*const get_value)(int, GpioLevel*) = GPIO_GetValue;
static size_t (*const get_device_id_size)(void) = Manufacturing_GetDeviceIdSize;
static int (*const get_device_id)(char*, size_t) = Manufacturing_GetDeviceId;
static int (*const is_networking_ready)(bool*) = Networking_IsNetworkingReady;
static int (*const uart_init_config)(UartConfigRecord*, uint32_t) = z__UART_InitConfig;
static int (*const uart_open)(uint32_t, const UartConfigRecord*) = z__UART_Open;
static int (*const scan)(void) = WifiConfig_TriggerScanAndGetScannedNetworkCount;
static int (*const get_scanned)(WifiScannedNetworkRecord*, size_t,
                                uint32_t) = z__WifiConfig_GetScannedNetworks;
static int (*const count_stored)(void) = WifiConfig_GetStoredNetworkCount;
static int (*const get_stored)(WifiStoredNetworkRecord*, size_t,
                               uint32_t) = z__WifiConfig_GetStoredNetworks;
static int (*const store_wpa2)(const uint8_t*, size_t, const char*,
                               size_t) = WifiConfig_StoreWpa2Network;
static int (*const store_open)(const uint8_t*, size_t) = WifiConfig_StoreOpenNetwork;
static int (*const get_current)(WifiCurrentNetworkRecord*,
                                uint32_t) = z__WifiConfig_GetCurrentNetwork;
static int (*const forget)(const WifiStoredNetworkRecord*) = z__WifiConfig_ForgetNetwork;
static int (*const forget_all)(void) = WifiConfig_ForgetAllNetworks;

static int failures = 0;

static void ExpectRefusal(const char* call, int result, int expected_errno) {
  if (result != -1 || errno != expected_errno) {
    fprintf(stderr, "%s: result %d, errno %d\n", call, result, errno);
    ++failures;
  }
}

static int GatherAndLog(const char* format, ...) {
  va_list arguments;
  int result;
  va_start(arguments, format);
  result = log_debug_var_args(format, arguments);
  va_end(arguments);
  return result;
}

static void Expect(const char* call, int holds) {
  if (!holds) {
    fprintf(stderr, "%s\n", call);
    ++failures;
  }
}

static void CallUart(void) {
  UartConfigRecord config;
  ExpectRefusal("z__UART_InitConfig version", uart_init_config(&config, 2), EINVAL);
  Expect("z__UART_InitConfig", uart_init_config(&config, UART_CONFIG_VERSION) == 0);
  ExpectRefusal("z__UART_Open pointer", uart_open(0, NULL), EFAULT);
  ExpectRefusal("z__UART_Open number", uart_open(256, &config), ENODEV);
  config.parity = 1;
  ExpectRefusal("z__UART_Open parity", uart_open(256, &config), EINVAL);
}

static void CallManufacturing(void) {
  char id[129];
  Expect("Manufacturing_GetDeviceIdSize", get_device_id_size() == sizeof id);
  ExpectRefusal("Manufacturing_GetDeviceId pointer", get_device_id(NULL, sizeof id), EFAULT);
  ExpectRefusal("Manufacturing_GetDeviceId size", get_device_id(id, sizeof id - 1), ERANGE);
}

static void CallWifi(void) {
  const uint8_t ssid[] = {'l', 'a', 'b'};
  WifiScannedNetworkRecord scanned;
  WifiStoredNetworkRecord stored;
  WifiCurrentNetworkRecord current;
  ExpectRefusal("z__WifiConfig_GetScannedNetworks pointer", get_scanned(NULL, 1, 1), EFAULT);
  ExpectRefusal("z__WifiConfig_GetScannedNetworks version", get_scanned(&scanned, 1, 2), EINVAL);
  Expect("z__WifiConfig_GetScannedNetworks",
         get_scanned(&scanned, 1, WifiConfig_StructVersion) == 0 && scanned.recordTag == 0);
  ExpectRefusal("z__WifiConfig_GetStoredNetworks count", get_stored(&stored, 0, 1), ERANGE);
  Expect("z__WifiConfig_GetStoredNetworks",
         get_stored(&stored, 1, WifiConfig_StructVersion) == 0 && stored.recordTag == 0);
  ExpectRefusal("z__WifiConfig_ForgetNetwork record", forget(&stored), EINVAL);
  ExpectRefusal("z__WifiConfig_GetCurrentNetwork version", get_current(&current, 2), EINVAL);
  ExpectRefusal("WifiConfig_StoreOpenNetwork pointer", store_open(NULL, 3), EFAULT);
  ExpectRefusal("WifiConfig_StoreWpa2Network length", store_wpa2(ssid, 3, "", 0), ERANGE);
}

/* The board's Wi-Fi daemon has no networks stored. */
static void CallWifiDaemon(void) {
  Expect("WifiConfig_TriggerScanAndGetScannedNetworkCount", scan() >= 0);
  Expect("WifiConfig_GetStoredNetworkCount", count_stored() == 0);
  Expect("WifiConfig_ForgetAllNetworks", forget_all() == 0);
}

int main(void) {
  GpioLevel level = GpioLevel_High;
  ExpectRefusal("Log_Debug", log_debug(NULL), EFAULT);
  ExpectRefusal("Log_DebugVarArgs", GatherAndLog(NULL), EFAULT);
  ExpectRefusal("GPIO_OpenAsOutput mode", open_as_output(0, 3, GpioLevel_Low), EINVAL);
  ExpectRefusal("GPIO_OpenAsOutput level", open_as_output(0, GpioDriveMode_PushPull, 2), EINVAL);
  ExpectRefusal("GPIO_SetValue level", set_value(-1, 2), EINVAL);
  ExpectRefusal("GPIO_SetValue descriptor", set_value(-1, GpioLevel_Low), EBADF);
  ExpectRefusal("GPIO_GetValue pointer", get_value(-1, NULL), EFAULT);
  ExpectRefusal("GPIO_GetValue descriptor", get_value(-1, &level), EBADF);
  ExpectRefusal("GPIO_OpenAsInput line", open_as_input(-1), ENODEV);
  CallUart();
  CallManufacturing();
  ExpectRefusal("Networking_IsNetworkingReady pointer", is_networking_ready(NULL), EFAULT);
  CallWifi();
  CallWifiDaemon();
  return failures;
}
