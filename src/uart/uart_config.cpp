// SPDX-License-Identifier: Apache-2.0
#include "uart/uart_config.h"

#include <stddef.h>
#include <termios.h>

namespace kestrel::uart {
namespace {

// The record is the application's: it was compiled against this layout.
static_assert(sizeof(UartConfigRecord) == 16);
static_assert(alignof(UartConfigRecord) == 4);
static_assert(offsetof(UartConfigRecord, versionTag) == 0);
static_assert(offsetof(UartConfigRecord, baudRate) == 4);
static_assert(offsetof(UartConfigRecord, blockingMode) == 8);
static_assert(offsetof(UartConfigRecord, dataBits) == 9);
static_assert(offsetof(UartConfigRecord, parity) == 10);
static_assert(offsetof(UartConfigRecord, stopBits) == 11);
static_assert(offsetof(UartConfigRecord, flowControl) == 12);

constexpr uint32_t kMagic = 0xDE2A;
constexpr uint32_t kVersionTag = kMagic << 16 | UART_CONFIG_VERSION;
constexpr uint32_t kDefaultBaudRate = 115200;

struct Speed {
  uint32_t baud_rate;
  speed_t code;
};

constexpr Speed kSpeeds[] = {
    {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
    {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
    {1500000, B1500000}, {2000000, B2000000},
};

// The codes are the kernel's, which takes some of them as numbers of its own to begin with.
static_assert(B9600 == 0x000D && B19200 == 0x000E && B38400 == 0x000F);
static_assert(B57600 == 0x1001 && B115200 == 0x1002 && B230400 == 0x1003 && B460800 == 0x1004);
static_assert(B500000 == 0x1005 && B576000 == 0x1006 && B921600 == 0x1007 && B1000000 == 0x1008);
static_assert(B1152000 == 0x1009 && B1500000 == 0x100A && B2000000 == 0x100B);

const Speed* FindSpeed(uint32_t baud_rate) {
  for (const Speed& speed : kSpeeds) {
    if (speed.baud_rate == baud_rate) {
      return &speed;
    }
  }
  return nullptr;
}

bool TakeSpeed(uint32_t baud_rate, uint32_t* code) {
  const Speed* const speed = FindSpeed(baud_rate);
  if (speed == nullptr) {
    return false;
  }
  *code = speed->code;
  return true;
}

/// Copies a field whose value is at least `lowest` and at most `highest`.
bool Take(uint8_t value, uint8_t lowest, uint8_t highest, uint8_t* field) {
  if (value < lowest || value > highest) {
    return false;
  }
  *field = value;
  return true;
}

bool TakeOnly(uint8_t accepted, uint8_t value, uint8_t* field) {
  return Take(value, accepted, accepted, field);
}

}  // namespace

void WriteDefaults(UartConfigRecord* record) {
  record->versionTag = kVersionTag;
  record->baudRate = kDefaultBaudRate;
  record->blockingMode = UartBlockingMode_NonBlocking;
  record->dataBits = UartDataBits_Eight;
  record->parity = UartParity_None;
  record->stopBits = UartStopBits_One;
  record->flowControl = UartFlowControl_None;
}

bool CheckConfig(const UartConfigRecord& record, UartConfigWrapper* checked) {
  return record.versionTag == kVersionTag && TakeSpeed(record.baudRate, &checked->speed) &&
         TakeOnly(UartBlockingMode_NonBlocking, record.blockingMode, &checked->blockingMode) &&
         TakeOnly(UartDataBits_Eight, record.dataBits, &checked->dataBits) &&
         TakeOnly(UartParity_None, record.parity, &checked->parity) &&
         TakeOnly(UartStopBits_One, record.stopBits, &checked->stopBits) &&
         Take(record.flowControl, UartFlowControl_None, UartFlowControl_XonXoff,
              &checked->flowControl);
}

}  // namespace kestrel::uart
