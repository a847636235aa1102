/* SPDX-License-Identifier: Apache-2.0 */
#include <kestrel/kestrel.h>

int main(void) { return Log_Debug("%s %d\n", "from C", 11); }
