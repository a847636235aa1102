// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "abi/elf_report.h"
#include "abi/promised_names.h"

namespace {

using kestrel::test::AllSymbols;
using kestrel::test::DynamicSymbols;
using kestrel::test::Exports;
using kestrel::test::Symbol;

// Written by hand on purpose: a name leaves or enters the interface here as well, or not at all.
const std::set<std::string> kInterface = {
    "GPIO_GetValue",
    "GPIO_OpenAsInput",
    "GPIO_OpenAsOutput",
    "GPIO_SetValue",
    "Log_Debug",
    "Log_DebugVarArgs",
    "Manufacturing_GetDeviceId",
    "Manufacturing_GetDeviceIdSize",
    "Networking_IsNetworkingReady",
    "WifiConfig_ForgetAllNetworks",
    "WifiConfig_GetStoredNetworkCount",
    "WifiConfig_StoreOpenNetwork",
    "WifiConfig_StoreWpa2Network",
    "WifiConfig_TriggerScanAndGetScannedNetworkCount",
    "z__UART_InitConfig",
    "z__UART_Open",
    "z__WifiConfig_ForgetNetwork",
    "z__WifiConfig_GetCurrentNetwork",
    "z__WifiConfig_GetScannedNetworks",
    "z__WifiConfig_GetStoredNetworks",
};

TEST(Exports, AreTheInterface) { EXPECT_EQ(Exports(KESTREL_LIBRARY), kInterface); }

TEST(Exports, AreThoseOfTheVersionScript) {
  EXPECT_EQ(Exports(KESTREL_LIBRARY), kestrel::test::GlobalNames(KESTREL_VERSION_SCRIPT));
}

TEST(Exports, AreThoseThatTheHeadersDeclare) {
  EXPECT_EQ(Exports(KESTREL_LIBRARY), kestrel::test::DeclaredNames(KESTREL_HEADERS));
}

TEST(Exports, AreGlobalFunctions) {
  for (const Symbol& symbol : DynamicSymbols(KESTREL_LIBRARY)) {
    if (symbol.defined) {
      EXPECT_EQ(symbol.type, "FUNC") << symbol.name;
      EXPECT_EQ(symbol.binding, "GLOBAL") << symbol.name;
      EXPECT_EQ(symbol.visibility, "DEFAULT") << symbol.name;
    }
  }
}

TEST(Exports, HaveNoVersionNodes) {
  EXPECT_EQ(kestrel::test::ReadElf("--version-info", KESTREL_LIBRARY).find(".gnu.version_d"),
            std::string::npos);
}

TEST(Exports, AreNotReachedThroughTheirSymbolsFromInside) {
  const std::set<std::string> relocated = kestrel::test::RelocatedNames(KESTREL_LIBRARY);
  EXPECT_EQ(relocated.count("ioctl"), 1u);
  for (const std::string& name : kInterface) {
    EXPECT_EQ(relocated.count(name), 0u) << name;
  }
}

std::vector<std::string> Objects() {
  std::vector<std::string> objects;
  std::istringstream joined(KESTREL_OBJECTS);
  for (std::string object; std::getline(joined, object, ':');) {
    objects.push_back(object);
  }
  return objects;
}

/// The names that a compiled source defines for other sources, with their visibilities.
std::map<std::string, std::string> SharedNames(const std::string& object) {
  std::map<std::string, std::string> visibilities;
  for (const Symbol& symbol : AllSymbols(object)) {
    if (symbol.defined && symbol.binding != "LOCAL") {
      visibilities[symbol.name] = symbol.visibility;
    }
  }
  return visibilities;
}

TEST(Objects, HideAllNamesOfTheProjectButTheInterface) {
  const std::regex internal("^_Z(N|NK|TV|TI|TS|TVN|TIN|TSN)(3nwl|4wifi|5vesta|7kestrel|8vestaipc)");
  std::map<std::string, std::string> visibilities;
  for (const std::string& object : Objects()) {
    for (const auto& [name, visibility] : SharedNames(object)) {
      visibilities[name] = visibility;
      EXPECT_TRUE(visibility == "HIDDEN" || !std::regex_search(name, internal)) << name;
      EXPECT_TRUE(visibility == "HIDDEN" || name[0] == '_' || kInterface.count(name) == 1) << name;
    }
  }
  EXPECT_EQ(visibilities["_ZN7kestrel15normalize_errnoEi"], "HIDDEN");
  EXPECT_EQ(visibilities["_ZN3nwl5Mutex4lockEv"], "HIDDEN");
  EXPECT_EQ(visibilities["Log_Debug"], "DEFAULT");
}

TEST(Symbols, NoneIsUnique) {
  EXPECT_EQ(kestrel::test::ReadElf("--symbols", KESTREL_LIBRARY).find(" UNIQUE "),
            std::string::npos);
}

}  // namespace
