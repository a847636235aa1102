// SPDX-License-Identifier: Apache-2.0
#include "ssid.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

#include "terminal_text.h"

namespace kestrelctl {
namespace {

struct Escape {
  char letter;
  char byte;
};

constexpr Escape kEscapes[] = {
    {'"', '"'}, {'\\', '\\'}, {'e', '\x1b'}, {'n', '\n'}, {'r', '\r'}, {'t', '\t'},
};

constexpr size_t kSizeOfHexEscape = 4;

struct Unescaped {
  char byte;
  size_t size;  ///< of its text
};

std::optional<Unescaped> UnescapeHex(std::string_view text) {
  uint8_t byte = 0;
  const char* const end = text.data() + kSizeOfHexEscape;
  if (text.size() < kSizeOfHexEscape || text[1] != 'x') {
    return std::nullopt;
  }
  const auto [rest, error] = std::from_chars(text.data() + 2, end, byte, 16);
  if (error != std::errc() || rest != end) {
    return std::nullopt;
  }
  return Unescaped{static_cast<char>(byte), kSizeOfHexEscape};
}

/// The byte of the escape that `text` begins with.
std::optional<Unescaped> UnescapeFirst(std::string_view text) {
  if (text[0] != '\\' || text.size() < 2) {
    return std::nullopt;
  }
  for (const Escape& known : kEscapes) {
    if (text[1] == known.letter) {
      return Unescaped{known.byte, 2};
    }
  }
  return UnescapeHex(text);
}

std::string Unescape(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const Unescaped first = UnescapeFirst(text).value_or(Unescaped{text[0], 1});
    bytes += first.byte;
    text.remove_prefix(first.size);
  }
  return bytes;
}

/// A text without an escape at its end that lacks its own end.
std::string_view WithoutBrokenEscape(std::string_view text) {
  // An escape that has been begun is at most one byte short of the longest.
  const size_t begin = text.size() - std::min(text.size(), kSizeOfHexEscape - 1);
  size_t position = 0;
  while (position < text.size()) {
    const std::optional<Unescaped> first = UnescapeFirst(text.substr(position));
    if (!first && text[position] == '\\' && position >= begin) {
      return text.substr(0, position);
    }
    position += first ? first->size : 1;
  }
  return text;
}

template <typename Record>
std::string_view TextOf(const Record& network) {
  return {reinterpret_cast<const char*>(network.ssid),
          std::min<size_t>(network.ssidLength, sizeof network.ssid)};
}

template <typename Record>
bool IsCut(const Record& network) {
  return network.ssidLength > sizeof network.ssid;
}

template <typename Record>
Ssid UnescapedSsidOf(const Record& network) {
  const bool is_cut = IsCut(network);
  const std::string_view text = TextOf(network);
  return {Unescape(is_cut ? WithoutBrokenEscape(text) : text), is_cut};
}

}  // namespace

Ssid SsidOf(const WifiScannedNetworkRecord& network) { return UnescapedSsidOf(network); }

Ssid SsidOf(const WifiCurrentNetworkRecord& network) { return UnescapedSsidOf(network); }

Ssid SsidOf(const WifiStoredNetworkRecord& network) {
  return {std::string(TextOf(network)), IsCut(network)};
}

std::string Shown(const Ssid& ssid) {
  if (ssid.IsHidden()) {
    return "(hidden)";
  }
  return Quoted(ssid.bytes) + (ssid.is_cut ? "..." : "");
}

}  // namespace kestrelctl
