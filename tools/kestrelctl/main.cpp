// SPDX-License-Identifier: Apache-2.0
#include "command_line.h"
#include "standard_streams.h"

int main(int argc, char** argv) {
  kestrelctl::PrepareStandardStreams();
  return kestrelctl::RunCommandLine(argc, argv);
}
