// SPDX-License-Identifier: Apache-2.0
#include "uart/line_settings.h"

namespace kestrel::uart {
namespace {

constexpr tcflag_t kInputCleared =
    BRKINT | PARMRK | INPCK | ISTRIP | INLCR | IGNCR | ICRNL | IUCLC | IXON | IXANY | IXOFF | IUTF8;
constexpr tcflag_t kInputSet = IGNBRK | IGNPAR;
// Without OCRNL: drivers that were told to translate carriage returns go on doing so.
constexpr tcflag_t kOutputCleared = OPOST | OLCUC | ONLCR | ONOCR | ONLRET | OFILL | OFDEL;
constexpr tcflag_t kControlCleared = CRTSCTS | PARODD | PARENB | CSTOPB;
constexpr tcflag_t kControlSet = CS8 | CREAD | HUPCL | CLOCAL;
constexpr tcflag_t kLocalCleared = ISIG | ICANON | XCASE | ECHO | ECHOE | ECHOK | ECHONL | NOFLSH |
                                   TOSTOP | ECHOCTL | ECHOPRT | PENDIN | IEXTEN;

static_assert(kInputCleared == 0x5FFA && kInputSet == 0x0005);
static_assert(kOutputCleared == 0xF7);
static_assert(kControlCleared == 0x80000340 && kControlSet == 0x0CB0);
static_assert(kLocalCleared == 0xC7FF);

constexpr cc_t kStartCharacter = 0x11;
constexpr cc_t kStopCharacter = 0x13;

void Change(tcflag_t* flags, tcflag_t cleared, tcflag_t set) { *flags = (*flags & ~cleared) | set; }

void SetFlowCharacters(cc_t start, cc_t stop, termios* settings) {
  settings->c_cc[VSTART] = start;
  settings->c_cc[VSTOP] = stop;
}

bool SetFlowControl(uint8_t value, termios* settings) {
  switch (value) {
    case UartFlowControl_None:
      Change(&settings->c_iflag, IXON | IXOFF, 0);
      Change(&settings->c_cflag, CRTSCTS, 0);
      SetFlowCharacters(0, 0, settings);
      return true;
    case UartFlowControl_RtsCts:
      Change(&settings->c_iflag, IXON | IXOFF, 0);
      Change(&settings->c_cflag, 0, CRTSCTS);
      SetFlowCharacters(0, 0, settings);
      return true;
    case UartFlowControl_XonXoff:
      Change(&settings->c_iflag, 0, IXON | IXOFF);
      Change(&settings->c_cflag, CRTSCTS, 0);
      SetFlowCharacters(kStartCharacter, kStopCharacter, settings);
      return true;
    default:
      return false;
  }
}

bool SetDataBits(uint8_t value, termios* settings) {
  if (value != UartDataBits_Eight) {
    return false;
  }
  Change(&settings->c_cflag, 0, CS8);
  return true;
}

bool SetStopBits(uint8_t value, termios* settings) {
  if (value != UartStopBits_One) {
    return false;
  }
  Change(&settings->c_cflag, CSTOPB, 0);
  return true;
}

bool SetParity(uint8_t value, termios* settings) {
  if (value != UartParity_None) {
    return false;
  }
  Change(&settings->c_cflag, CSTOPB | PARENB | PARODD, 0);
  return true;
}

bool SetBlockingMode(uint8_t value, termios* settings) {
  if (value != UartBlockingMode_NonBlocking) {
    return false;
  }
  settings->c_cc[VMIN] = 0;
  settings->c_cc[VTIME] = 0;
  Change(&settings->c_lflag, ICANON, 0);
  return true;
}

}  // namespace

void MakeRaw(termios* settings) {
  Change(&settings->c_iflag, kInputCleared, kInputSet);
  Change(&settings->c_oflag, kOutputCleared, 0);
  Change(&settings->c_cflag, kControlCleared, kControlSet);
  Change(&settings->c_lflag, kLocalCleared, 0);
  for (int character = VINTR; character <= VEOL2; ++character) {
    settings->c_cc[character] = 0;
  }
}

const LineSetting kLineSettings[5] = {
    {"flow control", &UartConfigWrapper::flowControl, SetFlowControl},
    {"data bits", &UartConfigWrapper::dataBits, SetDataBits},
    {"stop bits", &UartConfigWrapper::stopBits, SetStopBits},
    {"parity", &UartConfigWrapper::parity, SetParity},
    {"blocking mode", &UartConfigWrapper::blockingMode, SetBlockingMode},
};

}  // namespace kestrel::uart
