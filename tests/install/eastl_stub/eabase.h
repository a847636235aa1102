// SPDX-License-Identifier: Apache-2.0
#ifndef EABASE_EABASE_H
#define EABASE_EABASE_H
#define EABASE_VERSION "stub"
#endif  // EABASE_EABASE_H
