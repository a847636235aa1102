// SPDX-License-Identifier: Apache-2.0
// A shared object with nothing in it. C wants a declaration.
extern int kestrel_nothing;
