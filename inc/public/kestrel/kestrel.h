/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * All families of libkestrel at once. The conventions common to them are in <kestrel/api.h>.
 */
#ifndef KESTREL_KESTREL_H
#define KESTREL_KESTREL_H

#include <kestrel/api.h>
#include <kestrel/gpio.h>
#include <kestrel/log.h>
#include <kestrel/manufacturing.h>
#include <kestrel/networking.h>
#include <kestrel/uart.h>
#include <kestrel/wificonfig.h>

#endif /* KESTREL_KESTREL_H */
