/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * UART: serial ports of the device, "/dev/ttyS0" to "/dev/ttyS255".
 *
 * An open port is a descriptor of the kernel: raw, non-blocking and locked exclusively with
 * `flock`. Read and write it with `read`, `write` and `poll`; close it with `close`, which also
 * releases the lock. The library keeps nothing of it.
 *
 *     UartConfigRecord config;
 *     if (z__UART_InitConfig(&config, UART_CONFIG_VERSION) != 0) return errno;
 *     config.baudRate = 9600;
 *     config.flowControl = UartFlowControl_RtsCts;
 *     errno = 0;
 *     int port = z__UART_Open(0, &config);
 *     if (port < 0) return errno != 0 ? errno : EIO;
 *     write(port, "hello\r\n", 7);
 *     close(port);
 *
 * "Raw" means: eight bits come and go as they are, without echo, line editing, signals or
 * translation; a break is dropped on receipt, and so are characters with framing errors where the
 * driver tells them apart; the receiver is on and modem status lines are ignored; the last close
 * hangs up. A read returns at once with what
 * is there, and fails with EAGAIN, or returns 0, when nothing is. Of the terminal's settings the
 * library leaves these as the driver had them: IMAXBEL, OCRNL, the output delays (NLDLY, CRDLY,
 * TABDLY, BSDLY, VTDLY, FFDLY), CMSPAR, ECHOKE, FLUSHO, EXTPROC, the line discipline and the
 * control characters after VEOL2.
 *
 * A framing that the record cannot ask for is set on the open port with termios. This makes it 8E1;
 * characters of another parity are dropped then. `tcsetattr` succeeds when it could do part of what
 * is asked, so look at what `tcgetattr` says afterwards:
 *
 *     struct termios settings;
 *     if (tcgetattr(port, &settings) != 0) return errno;
 *     settings.c_iflag |= INPCK;
 *     settings.c_cflag &= ~(tcflag_t)(PARODD | CMSPAR);
 *     settings.c_cflag |= PARENB;
 *     if (tcsetattr(port, TCSANOW, &settings) != 0) return errno;
 */
#ifndef KESTREL_UART_H
#define KESTREL_UART_H

#include <kestrel/api.h>
#include <stdint.h>

KESTREL_BEGIN_DECLS

/** The version of UartConfigRecord that this header describes. */
#define UART_CONFIG_VERSION 1u

/**
 * What `read` and `write` do when they would have to wait. Non-blocking is the only mode accepted.
 */
typedef uint8_t UartBlockingMode;
enum { UartBlockingMode_NonBlocking = 0 };

/** Data bits of a character. Eight is the only number accepted. */
typedef uint8_t UartDataBits;
enum { UartDataBits_Eight = 8 };

/** The parity bit of a character. None is the only parity accepted. */
typedef uint8_t UartParity;
enum { UartParity_None = 0 };

/** Stop bits of a character. One is the only number accepted. */
typedef uint8_t UartStopBits;
enum { UartStopBits_One = 1 };

/** How a receiver that cannot keep up stops its sender. All three are accepted. */
typedef uint8_t UartFlowControl;
enum {
  UartFlowControl_None = 0,   /**< Not at all: what the receiver cannot take is lost. */
  UartFlowControl_RtsCts = 1, /**< By the lines RTS and CTS. */
  UartFlowControl_XonXoff = 2 /**< By the characters DC1 (0x11) and DC3 (0x13), not to be sent. */
};

/**
 * What a port is to be set to. The caller owns the record; the library reads it during
 * z__UART_Open() only. It has the same 16 bytes on every device: integers are little-endian, and
 * the last three bytes are padding, which the library neither reads nor writes.
 */
typedef struct {
  uint32_t versionTag;           /**< 0xDE2A0001; written by z__UART_InitConfig(), not by you. */
  uint32_t baudRate;             /**< Bits per second: 9600, 19200, 38400, 57600, 115200, 230400,
                                      460800, 500000, 576000, 921600, 1000000, 1152000, 1500000 or
                                      2000000. */
  UartBlockingMode blockingMode; /**< UartBlockingMode_NonBlocking. */
  UartDataBits dataBits;         /**< UartDataBits_Eight. */
  UartParity parity;             /**< UartParity_None. */
  UartStopBits stopBits;         /**< UartStopBits_One. */
  UartFlowControl flowControl;   /**< A UartFlowControl constant. */
} UartConfigRecord;

/**
 * Fills in a record with the defaults: 115200 bits per second, non-blocking, eight data bits, no
 * parity, one stop bit, no flow control.
 *
 * Thread-safe for different records. Prints nothing.
 *
 * @param config        the record; it must not be null, which is not checked
 * @param structVersion UART_CONFIG_VERSION
 * @return 0, or -1 with errno set:
 *   - EINVAL: `structVersion` is not 1. The record is untouched.
 */
KESTREL_API int z__UART_InitConfig(UartConfigRecord* config, uint32_t structVersion);

/**
 * Opens "/dev/ttyS" followed by `uartId`, locks it exclusively, sets it as `config` asks and reads
 * the settings back to be sure that the driver took them; a driver that reports others is asked ten
 * times.
 *
 * The lock is `flock`'s: it keeps out every other z__UART_Open(), in this process and in others,
 * and whoever else asks for it, until the last copy of the descriptor is closed. The descriptor is
 * not close-on-exec, so programs that the application starts inherit it, and the lock with it,
 * unless the application prevents that.
 *
 * Thread-safe: of threads that open one port at the same time, one succeeds. Does not wait for
 * other programs, nor for a carrier.
 *
 * @param uartId number of the port, 0 to 255
 * @param config record from z__UART_InitConfig(), changed as wished; it stays the caller's
 * @return the port's descriptor (0 or more), which the caller closes; or -1 with errno set. Checked
 *   before the device is touched, and silent:
 *   - EFAULT: `config` is null, whatever `uartId` is.
 *   - EINVAL: the record was not initialised or is of another version, `baudRate` is not one of
 *     the list, or another field is not an accepted value.
 *   - ENODEV: `uartId` is above 255.
 *   - ENOMEM: no memory is left; found before all others.
 *
 *   From the device, with TEXT and NUMBER being the system call's error. EPERM, EFAULT, ENODEV and
 *   EINVAL from it are printed as they are and then become EIO, because the argument at fault would
 *   be the library's; every other error reaches the caller as it is. The descriptor is closed.
 *   - ENOENT, EACCES, EMFILE, ENXIO (no hardware behind the port) and the other errors of `open`.
 *     Prints "[Kestrel:UART] Unable to open device: TEXT (NUMBER)."
 *   - EWOULDBLOCK: the port is open elsewhere. Prints "[Kestrel:UART] Unable to open device
 *     exclusively: TEXT (NUMBER)." If closing the device fails then, prints "[Kestrel:UART] Error
 *     closing the device: TEXT (NUMBER)." as well.
 *   - ENOTTY, EIO and so on: the device is no terminal, has no hardware behind it, or does not do
 *     what is asked. Prints one of
 *     "[Kestrel:UART] Unable to get attributes of device: TEXT (NUMBER)."
 *     "[Kestrel:UART] Unable to set output speed of UART: TEXT (NUMBER)."
 *     "[Kestrel:UART] Unable to set input speed of UART: TEXT (NUMBER)."
 *     "[Kestrel:UART] Unable to set device to non-blocking: TEXT (NUMBER)."
 *     "[Kestrel:UART] Unable to set attributes of device: TEXT (NUMBER)."
 *     "[Kestrel:UART] Unable to confirm attributes of device: TEXT (NUMBER)."
 *   - whatever errno was before the call, 0 included: ten times the driver reported other settings
 *     than it was given. EPERM, EFAULT, ENODEV and EINVAL from before become EIO here as well. Set
 *     errno to 0 before the call: -1 with errno 0 is then this failure. Prints "[Kestrel:UART]
 * Could not set the attributes of the device." If closing the device fails after one of the last
 * two, prints "[Kestrel:UART] Error closing device: TEXT (NUMBER)." as well, and errno is that of
 * the close, unless the first error becomes EIO.
 */
KESTREL_API int z__UART_Open(uint32_t uartId, const UartConfigRecord* config);

KESTREL_END_DECLS

#endif /* KESTREL_UART_H */
