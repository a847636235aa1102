/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Joins a Wi-Fi network: scans, stores the network, and waits until the device is connected to it.
 *
 *     wifi_join [--forget] [--seconds N] NAME [FILE]
 *
 * The passphrase is the first line of FILE, or of standard input for "-"; a network without FILE is
 * open. Scanning and connecting may take so many seconds each (30 when not given). With --forget,
 * the network is forgotten again at the end.
 */
#define _DEFAULT_SOURCE

#include <errno.h>
#include <getopt.h>
#include <kestrel/log.h>
#include <kestrel/wificonfig.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

/* A name may be longer than its place in a record, and runs on then. A reply of the daemon has at
 * most 2048 bytes, so as many behind the records are enough for whatever it says. */
enum { kLongestReply = 2048, kMostNetworks = 100, kAskPerSecond = 4 };

typedef struct {
  const char* name;
  const char* file;
  long seconds;
  bool forget;
} Options;

static bool Failed(const char* what) {
  Log_Debug("wifi_join: cannot %s: %s\n", what, strerror(errno));
  return false;
}

static void Pause(void) {
  const struct timespec pause = {.tv_sec = 0, .tv_nsec = 1000000000 / kAskPerSecond};
  nanosleep(&pause, NULL);
}

/* The daemon's text for a name is the name itself as long as it is printable, without quotation
 * marks and backslashes. */
static bool HasName(const uint8_t* ssid, uint8_t length, const char* name) {
  return length == strlen(name) && memcmp(ssid, name, length) == 0;
}

/* A scan goes on after the call that starts it, and meanwhile the daemon refuses another. So the
 * first call that it takes after that gives what the scan has found. */
static bool Scan(long seconds) {
  bool ended = false;
  if (WifiConfig_TriggerScanAndGetScannedNetworkCount() < 0 && errno != EINVAL) {
    return Failed("scan");
  }
  for (long asked = 0; !ended && asked < seconds * kAskPerSecond; ++asked) {
    Pause();
    ended = WifiConfig_TriggerScanAndGetScannedNetworkCount() >= 0;
    if (!ended && errno != EINVAL) {
      return Failed("scan");
    }
  }
  if (!ended) {
    Log_Debug("wifi_join: no scan has ended within %ld seconds\n", seconds);
  }
  return ended;
}

static void PrintSignal(const char* name) {
  static WifiScannedNetworkRecord
      networks[kMostNetworks + kLongestReply / sizeof(WifiScannedNetworkRecord) + 1];
  const int count =
      z__WifiConfig_GetScannedNetworks(networks, kMostNetworks, WifiConfig_StructVersion);
  for (int i = 0; i < count; ++i) {
    if (HasName(networks[i].ssid, networks[i].ssidLength, name)) {
      printf("%s: %d dBm at %u MHz\n", name, networks[i].signalDbm,
             (unsigned)networks[i].frequencyMhz);
      return;
    }
  }
  printf("%s: not heard, which a hidden network is not either\n", name);
}

/* Reads a line without its end. What standard input keeps of it is nothing, as it has no buffer. */
static bool ReadPassphrase(const char* name, char* passphrase, size_t size) {
  FILE* const file = strcmp(name, "-") == 0 ? stdin : fopen(name, "re");
  if (file == NULL) {
    return Failed("open the passphrase's file");
  }
  setvbuf(file, NULL, _IONBF, 0);
  errno = ENODATA;
  const bool done = fgets(passphrase, (int)size, file) != NULL;
  if (!done) {
    Failed("read the passphrase");
  } else {
    passphrase[strcspn(passphrase, "\r\n")] = '\0';
  }
  if (file != stdin) {
    fclose(file);
  }
  return done;
}

static bool StoreWithPassphrase(const Options* options) {
  char passphrase[68] = "";
  bool done = ReadPassphrase(options->file, passphrase, sizeof passphrase);
  if (done) {
    done = WifiConfig_StoreWpa2Network((const uint8_t*)options->name, strlen(options->name),
                                       passphrase, strlen(passphrase)) == 0 ||
           Failed("store the network");
  }
  explicit_bzero(passphrase, sizeof passphrase);
  return done;
}

static bool Store(const Options* options) {
  if (options->file != NULL) {
    return StoreWithPassphrase(options);
  }
  return WifiConfig_StoreOpenNetwork((const uint8_t*)options->name, strlen(options->name)) == 0 ||
         Failed("store the network");
}

/* That there is no current network is no failure: the daemon may still be connecting. */
static bool IsCurrent(const char* name, WifiCurrentNetworkRecord* current) {
  return z__WifiConfig_GetCurrentNetwork(current, WifiConfig_StructVersion) == 0 &&
         HasName(current->ssid, current->ssidLength, name);
}

static bool WaitUntilCurrent(const Options* options) {
  static WifiCurrentNetworkRecord current[1 + kLongestReply / sizeof(WifiCurrentNetworkRecord) + 1];
  bool joined = IsCurrent(options->name, current);
  for (long asked = 0; !joined && asked < options->seconds * kAskPerSecond; ++asked) {
    Pause();
    joined = IsCurrent(options->name, current);
  }
  if (!joined) {
    Log_Debug("wifi_join: not connected after %ld seconds: the passphrase may be wrong\n",
              options->seconds);
    return false;
  }
  const uint8_t* const address = current->bssid;
  printf("%s: connected to %02x:%02x:%02x:%02x:%02x:%02x\n", options->name, address[0], address[1],
         address[2], address[3], address[4], address[5]);
  return true;
}

static bool Forget(const char* name) {
  const int count = WifiConfig_GetStoredNetworkCount();
  const size_t size = (size_t)(count > 0 ? count : 0) * sizeof(WifiStoredNetworkRecord);
  WifiStoredNetworkRecord* const stored = malloc(size + kLongestReply);
  int result = -1;
  errno = ENOENT;
  const int filled =
      count <= 0 || stored == NULL
          ? 0
          : z__WifiConfig_GetStoredNetworks(stored, (size_t)count, WifiConfig_StructVersion);
  for (int i = 0; i < filled && result != 0; ++i) {
    if (HasName(stored[i].ssid, stored[i].ssidLength, name)) {
      result = z__WifiConfig_ForgetNetwork(&stored[i]);
    }
  }
  free(stored);
  if (result != 0) {
    return Failed("forget the network");
  }
  printf("%s: forgotten\n", name);
  return true;
}

static bool ParseSeconds(const char* text, long* seconds) {
  char* rest = NULL;
  errno = 0;
  *seconds = strtol(text, &rest, 10);
  return errno == 0 && rest != text && *rest == '\0' && *seconds >= 0 && *seconds <= 3600;
}

static bool ParseOptions(int argc, char** argv, Options* options) {
  static const struct option kKnown[] = {{"forget", no_argument, NULL, 'f'},
                                         {"seconds", required_argument, NULL, 's'},
                                         {NULL, 0, NULL, 0}};
  opterr = 0;
  for (int option = 0; (option = getopt_long(argc, argv, "", kKnown, NULL)) != -1;) {
    if (option == 'f') {
      options->forget = true;
    } else if (option != 's' || !ParseSeconds(optarg, &options->seconds)) {
      return false;
    }
  }
  if (argc - optind < 1 || argc - optind > 2) {
    return false;
  }
  options->name = argv[optind];
  options->file = argc - optind == 2 ? argv[optind + 1] : NULL;
  return true;
}

int main(int argc, char** argv) {
  Options options = {.name = NULL, .file = NULL, .seconds = 30, .forget = false};
  if (!ParseOptions(argc, argv, &options)) {
    fprintf(stderr,
            "usage: wifi_join [--forget] [--seconds N] NAME [FILE], at most 3600 seconds\n");
    return 2;
  }
  if (!Scan(options.seconds)) {
    return EXIT_FAILURE;
  }
  PrintSignal(options.name);
  if (!Store(&options)) {
    return EXIT_FAILURE;
  }
  bool done = WaitUntilCurrent(&options);
  if (options.forget) {
    done = Forget(options.name) && done;
  }
  return fflush(stdout) == 0 && done ? EXIT_SUCCESS : EXIT_FAILURE;
}
