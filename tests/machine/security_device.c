// SPDX-License-Identifier: Apache-2.0
// security-device NAME: a security device at /dev/NAME, until SIGTERM. It answers the request for
// the state of the device as /run/security-device.conf says at that moment, in lines of
//
//   identifier HEX   the 64 bytes of the identifier, as 128 digits
//   result NUMBER    what the driver returns: negative for a failure, -5 for EIO
#define FUSE_USE_VERSION 31
#include <cuse_lowlevel.h>
#include <errno.h>
#include <fuse_lowlevel.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>

enum { kIdentifierSize = 64 };

struct device_state {
  uint8_t other[68];
  uint8_t identifier[kIdentifierSize];
};
_Static_assert(sizeof(struct device_state) == 132, "as the driver has it");

#define GET_DEVICE_STATE _IOWR('p', 0x01, struct device_state)

struct answer {
  struct device_state state;
  int result;
};

static void read_identifier(const char* digits, uint8_t* identifier) {
  for (int i = 0; i < kIdentifierSize; ++i) {
    unsigned value = 0;
    if (sscanf(digits + 2 * i, "%2x", &value) != 1) {
      return;
    }
    identifier[i] = (uint8_t)value;
  }
}

static struct answer read_answer(void) {
  struct answer answer = {.result = -EIO};
  // Other than zero, so that taking the identifier from the wrong place shows.
  memset(answer.state.other, 0xEE, sizeof(answer.state.other));
  FILE* file = fopen("/run/security-device.conf", "re");
  if (file == NULL) {
    return answer;
  }
  answer.result = 0;
  char key[16];
  char value[2 * kIdentifierSize + 1];
  while (fscanf(file, "%15s %128s", key, value) == 2) {
    if (strcmp(key, "identifier") == 0) {
      read_identifier(value, answer.state.identifier);
    } else if (strcmp(key, "result") == 0) {
      sscanf(value, "%d", &answer.result);
    }
  }
  fclose(file);
  return answer;
}

static void open_device(fuse_req_t request, struct fuse_file_info* file) {
  fuse_reply_open(request, file);
}

static void control_device(fuse_req_t request, int command, void* argument,
                           struct fuse_file_info* file, unsigned flags, const void* in,
                           size_t in_size, size_t out_size) {
  (void)argument;
  (void)file;
  (void)flags;
  (void)in;
  if ((unsigned)command != GET_DEVICE_STATE || in_size != sizeof(struct device_state) ||
      out_size != sizeof(struct device_state)) {
    fuse_reply_err(request, ENOTTY);
    return;
  }
  const struct answer answer = read_answer();
  fuse_reply_ioctl(request, answer.result, &answer.state, sizeof(answer.state));
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: security-device NAME\n");
    return 2;
  }
  char name[64];
  snprintf(name, sizeof(name), "DEVNAME=%s", argv[1]);
  const char* info[] = {name};
  const struct cuse_info device = {.dev_info_argc = 1, .dev_info_argv = info};
  const struct cuse_lowlevel_ops calls = {.open = open_device, .ioctl = control_device};
  // In the foreground, by one thread: requests are answered in order.
  char* options[] = {argv[0], "-f", "-s", NULL};
  return cuse_lowlevel_main(3, options, &device, &calls, NULL);
}
