// SPDX-License-Identifier: Apache-2.0
#include "install/eastl_prefix.h"

#include <filesystem>
#include <stdexcept>

#include "support/run_program.h"

namespace kestrel::test {
namespace {

namespace fs = std::filesystem;

const fs::path kStub = fs::path(KESTREL_SOURCE_DIR) / "tests/install/eastl_stub";

}  // namespace

EastlPrefix::EastlPrefix() {
  const fs::path include = fs::path(path()) / "include";
  fs::create_directories(include / "EABase");
  fs::create_directory(fs::path(path()) / "lib");
  fs::copy(KESTREL_SOURCE_DIR "/libs/eastl-std/include", include, fs::copy_options::recursive);
  fs::copy_file(kStub / "eabase.h", include / "EABase/eabase.h");
  fs::copy_file(kStub / "EASprintf.h", include / "EAStdC/EASprintf.h",
                fs::copy_options::overwrite_existing);
}

void EastlPrefix::AddEastlPackage(const std::string& target) const {
  fs::create_directories(fs::path(path()) / "lib/cmake/EASTL");
  const std::string kind = target == "EASTL" ? "" : " IMPORTED";
  directory_.Write("eastl/lib/cmake/EASTL/EASTLConfig.cmake",
                   "add_library(" + target + " INTERFACE" + kind +
                       ")\n"
                       "target_include_directories(" +
                       target + " INTERFACE \"" + path() + "/include\")\n");
}

void EastlPrefix::AddArchive(const std::string& name, const std::string& source) const {
  const std::string object = path() + "/" + name + ".o";
  Require({CXX_COMPILER, "-std=c++17", "-fPIC", "-I" + path() + "/include", "-c",
           (kStub / source).string(), "-o", object});
  Require({AR_PROGRAM, "rcs", path() + "/lib/lib" + name + ".a", object});
}

void Require(const std::vector<std::string>& arguments) {
  const ProgramResult result = RunProgram(arguments);
  if (result.status != 0) {
    throw std::runtime_error(arguments.at(0) + " failed:\n" + result.standard_output +
                             result.standard_error);
  }
}

}  // namespace kestrel::test
