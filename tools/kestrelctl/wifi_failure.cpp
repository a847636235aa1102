// SPDX-License-Identifier: Apache-2.0
#include "wifi_failure.h"

#include <cerrno>
#include <cstdlib>

namespace kestrelctl {
namespace {

constexpr char kBeforeNumber[] = "Error performing operation: ";

constexpr char kGone[] = "the Wi-Fi daemon has ended";

/// By the number that the library prints with EIO.
const std::vector<Meaning> kMeaningsOfNumbers = {
    {2, "what the Wi-Fi daemon answered cannot be understood"},
    {7, "the Wi-Fi daemon has too many networks"},
    {EINVAL, "the Wi-Fi daemon is not running, or does not let this user in"},
    {EAGAIN, "the Wi-Fi daemon has not answered for 30 seconds"},
    {EPIPE, kGone},
    {ECONNRESET, kGone},
};

const char* MeaningOfPrinted(const std::string& printed) {
  const size_t found = printed.find(kBeforeNumber);
  if (found != std::string::npos) {
    const int number = atoi(printed.c_str() + found + sizeof kBeforeNumber - 1);
    for (const Meaning& meaning : kMeaningsOfNumbers) {
      if (number == meaning.error) {
        return meaning.text;
      }
    }
  }
  return "there is no talking to the Wi-Fi daemon; --verbose shows why";
}

}  // namespace

int ReportWifiFailure(const std::string& what, const LibraryAnswer& answer,
                      const std::vector<Meaning>& meanings) {
  std::vector<Meaning> all = meanings;
  all.push_back({EIO, MeaningOfPrinted(answer.printed)});
  all.push_back({EINVAL, "the Wi-Fi daemon refused"});
  errno = answer.error;
  return ReportFailure(what, all);
}

}  // namespace kestrelctl
