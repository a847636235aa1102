// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "abi/elf_report.h"
#include "abi/promised_names.h"

namespace {

using kestrel::test::DynamicSymbols;
using kestrel::test::Exports;
using kestrel::test::Symbol;

// Written by hand on purpose: a name leaves or enters the interface here as well, or not at all.
const std::set<std::string> kInterface = {
    "GPIO_GetValue", "GPIO_OpenAsInput", "GPIO_OpenAsOutput",
    "GPIO_SetValue", "Log_Debug",        "Log_DebugVarArgs",
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

TEST(Symbols, NoneIsUnique) {
  EXPECT_EQ(kestrel::test::ReadElf("--symbols", KESTREL_LIBRARY).find(" UNIQUE "),
            std::string::npos);
}

}  // namespace
