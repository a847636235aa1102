// SPDX-License-Identifier: Apache-2.0
#include <kestrel/log.h>

int main() { return Log_Debug("%s %d\n", "from C++", 11); }
