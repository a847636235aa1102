/* SPDX-License-Identifier: Apache-2.0 */
/* For flock, the speeds and O_CLOEXEC. */
#define _GNU_SOURCE
#include "bare_calls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

int BareUartOpen(const char* path) {
  struct termios settings = {0};
  struct termios confirmed = {0};
  int character = 0;
  const int port = open(path, O_RDWR | O_NOCTTY | O_NONBLOCK);
  if (port < 0) {
    return -1;
  }
  if (flock(port, LOCK_EX | LOCK_NB) != 0 || tcgetattr(port, &settings) != 0) {
    close(port);
    return -1;
  }
  cfmakeraw(&settings);
  for (character = VINTR; character <= VEOL2; ++character) {
    settings.c_cc[character] = 0;
  }
  settings.c_cflag |= CLOCAL | CREAD | HUPCL;
  if (cfsetospeed(&settings, B115200) != 0 || cfsetispeed(&settings, B115200) != 0 ||
      fcntl(port, F_SETFL, O_NONBLOCK) != 0 || tcsetattr(port, TCSANOW, &settings) != 0 ||
      tcgetattr(port, &confirmed) != 0 || confirmed.c_cflag != settings.c_cflag) {
    close(port);
    return -1;
  }
  return port;
}

int BareIsNetworkingReady(int* ready) {
  unsigned char flags[5] = {0};
  ssize_t count = 0;
  const int file = open("/var/run/network_status", O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return -1;
  }
  count = read(file, flags, sizeof flags);
  close(file);
  *ready = flags[0] != 0 && flags[2] != 0 && flags[3] != 0 && flags[4] != 0;
  return count < 0 ? -1 : 0;
}

int BareGetDeviceId(char* text) {
  unsigned char record[132];
  static const char digits[] = "0123456789ABCDEF";
  int result = -1;
  size_t i = 0;
  const int lodestone = open("/dev/lodestone", O_RDONLY | O_CLOEXEC);
  const int warden = open("/dev/warden", O_RDONLY | O_CLOEXEC);
  if (warden >= 0) {
    result = ioctl(warden, _IOC(_IOC_READ | _IOC_WRITE, 'p', 1, sizeof record), record);
    close(warden);
  }
  if (lodestone >= 0) {
    close(lodestone);
  }
  for (i = 0; result >= 0 && i < 64; ++i) {
    text[2 * i] = digits[record[68 + i] >> 4];
    text[2 * i + 1] = digits[record[68 + i] & 15];
  }
  text[128] = 0;
  return result < 0 ? -1 : 0;
}

ssize_t BareScan(int daemon, char* list, size_t size) {
  static const char scan[] = "SCAN";
  static const char results[] = "SCAN_RESULTS";
  if (write(daemon, scan, sizeof scan) < 0 || read(daemon, list, size) < 0 ||
      write(daemon, results, sizeof results) < 0) {
    return -1;
  }
  return read(daemon, list, size);
}
