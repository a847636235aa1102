/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Wi-Fi configuration: scanning, the networks that the Wi-Fi daemon has stored, the one it is
 * connected to, and adding and forgetting networks.
 *
 * The functions talk to the daemon over its request socket,
 * "/var/volatile/tmp/wlan0_request_socket": one command out, one reply in, as often as needed. Such
 * a pair is called an exchange here. In addition to what <kestrel/api.h> says:
 *
 *  1. One connection, for good. The process's first Wi-Fi call connects, even if its arguments are
 *     then refused, and the connection is kept, close-on-exec, until the library is unloaded or the
 *     process exits. There is no second try: when the daemon is not there at that moment, or a
 *     later exchange fails, every further exchange of the process fails with EIO. Restart the
 *     application after the daemon.
 *  2. Time. An exchange returns as soon as the daemon answers. After 30 seconds without an answer
 *     it fails, and the connection is closed. Each function says how many exchanges it makes;
 *     without a connection they fail at once.
 *  3. A daemon that goes away. A command that can no longer be sent fails the call with EIO, and no
 *     SIGPIPE reaches the application, whose handlers, signal mask and pending signals stay as they
 *     are. A daemon that takes a command and closes the connection before it answers has given an
 *     empty reply, which is no error. When that happens in the last exchange of a call, the call
 *     succeeds: a network is stored or forgotten but perhaps not saved, and a scan returns 0 and
 *     leaves an empty list. Every later exchange fails, so a WifiConfig_GetStoredNetworkCount()
 *     that succeeds afterwards tells that the daemon was there.
 *  4. Signals. A signal that the application catches during an exchange ends it with EINTR, also
 *     when its handler was installed with SA_RESTART; so does being stopped and continued (SIGSTOP
 *     or SIGTSTP, and SIGCONT). The call fails with EIO (printed with 4), and the connection is
 *     closed for the life of the process. Block signals around the calls where handlers are
 *     installed:
 *
 *         sigset_t all, previous;
 *         sigfillset(&all);
 *         pthread_sigmask(SIG_SETMASK, &all, &previous);
 *         int count = WifiConfig_GetStoredNetworkCount();
 *         pthread_sigmask(SIG_SETMASK, &previous, NULL);
 *
 *  5. Threads. Any number of threads may call any of the functions at once, and each gets the
 *     replies to its own commands. There are two kept lists, that of
 *     WifiConfig_TriggerScanAndGetScannedNetworkCount() with z__WifiConfig_GetScannedNetworks() and
 *     that of WifiConfig_GetStoredNetworkCount() with z__WifiConfig_GetStoredNetworks(). Each is
 *     replaced, read and emptied as a whole, so records never mix two lists; but between the two
 *     calls of a list another thread may replace it, or take the networks of a scan. Functions of
 *     several exchanges are not atomic either: two threads (or programs) that add or forget at once
 *     meet each other's work half done.
 *  6. Fork. A child shares the socket with its parent and would take its replies: only one of them
 *     may go on calling these functions.
 *  7. Errors of the daemon and the connection. Where a function says "daemon errors", these are:
 *     - EINVAL: the daemon refused a command with a reply that begins with "FAIL". Prints nothing
 *       of its own.
 *     - EIO: there is no connection, or it failed, or a reply could not be understood. Prints
 *       "[Kestrel:WifiConfig] Error performing operation: NUMBER". NUMBER is 22 without a
 *       connection, otherwise the errno of the socket call (11 after 30 seconds, 32 when the daemon
 *       has gone), or 2 for a reply.
 *     Errors of the socket are translated by their number alone, so a few arrive under another
 *     name: EPERM as ENODEV (printed with 1), ESRCH, EIO and ENXIO as EINVAL, EBADF as EEXIST, and
 *     EACCES as EPERM (none of them printed).
 *  8. Names. A name (SSID) has up to 32 bytes of any value, but what the daemon reports is its own
 *     text for it. Scans and the current network give `\"`, `\\`, `\n`, `\t`, `\e` and `\xHH` for
 *     quotes, backslashes and what is not printable, so 32 bytes can be 128 characters. Stored
 *     networks with bytes that are not printable give hexadecimal digits without the first and the
 *     last one, up to 62 characters.
 *  9. Names longer than 32 characters overrun `ssid`. The text is copied as long as it is: over the
 *     fields that follow, which are written afterwards, over the next record, and over what lies
 *     behind the array. `ssidLength` is its length modulo 256, so a text of 257 to 288 characters
 *     looks like a good name of 1 to 32. Leave 80 unused bytes behind the
 *     last record of an array and behind a current network, and do not trust a record whose
 *     `ssidLength` exceeds 32. That covers the daemon's texts for 32 bytes; a daemon that sends
 *     longer ones overruns by up to 2010 bytes. A library built with KESTREL_BOUND_SSID_COPY needs
 *     no slack: it ends the copy where the array ends. Its `ssidLength` is the number of bytes that
 *     were copied, modulo 256 as well.
 * 10. Passphrases are handed to the daemon and then wiped from the library's memory. They are in no
 *     message.
 * 11. Long replies. Of a reply the library reads 2048 bytes. What a daemon sends beyond them is
 *     lost: some 30 to 40 networks of a scan and 40 to 80 stored ones fit, and the last of them may
 *     be cut short.
 * 12. Memory that runs out in the process's first Wi-Fi call ends the process; later, it leaves a
 *     function as the C++ exception std::bad_alloc. What z__WifiConfig_GetScannedNetworks() has not
 *     copied by then is lost.
 * 13. Records are those of version 1: pass WifiConfig_StructVersion.
 */
#ifndef KESTREL_WIFICONFIG_H
#define KESTREL_WIFICONFIG_H

#include <kestrel/api.h>
#include <stddef.h>
#include <stdint.h>

KESTREL_BEGIN_DECLS

/** How a network is secured. Networks of any other kind (WEP, enterprise, ...) are Unknown. */
typedef uint8_t WifiSecurity;
enum { WifiSecurity_Unknown = 0, WifiSecurity_Open = 1, WifiSecurity_Wpa2Psk = 2 };

/** The version of all records below. */
enum { WifiConfig_StructVersion = 1 };

/** `recordTag` of a complete record, by its type. With any other, the rest is undefined. */
#define WifiScannedNetworkRecord_Complete UINT32_C(0x7EB10001)
#define WifiStoredNetworkRecord_Complete UINT32_C(0xB22E0001)
#define WifiCurrentNetworkRecord_Complete UINT32_C(0x09EF0001)

/** A network that a scan has found. */
typedef struct WifiScannedNetworkRecord {
  uint32_t recordTag;    /**< WifiScannedNetworkRecord_Complete; 0 in a slot without a network */
  uint8_t ssid[32];      /**< the name, without a terminating NUL */
  uint8_t bssid[6];      /**< the access point's address, first octet first */
  uint8_t ssidLength;    /**< how many bytes of `ssid` are the name */
  WifiSecurity security; /**< a WifiSecurity constant */
  uint32_t frequencyMhz; /**< the channel's centre frequency */
  int8_t signalDbm;      /**< the signal's level in dBm */
} WifiScannedNetworkRecord;

/** A network that the daemon has stored. */
typedef struct WifiStoredNetworkRecord {
  uint32_t recordTag;    /**< WifiStoredNetworkRecord_Complete; 0 in a slot without a network */
  uint8_t ssid[32];      /**< the name, without a terminating NUL */
  uint8_t ssidLength;    /**< how many bytes of `ssid` are the name */
  uint8_t enabled;       /**< 1 when the daemon may connect to it, 0 when not or not for now */
  uint8_t connected;     /**< 1 when the current network has this name */
  WifiSecurity security; /**< a WifiSecurity constant */
} WifiStoredNetworkRecord;

/** The network that the daemon is connected to. */
typedef struct WifiCurrentNetworkRecord {
  uint32_t recordTag;    /**< WifiCurrentNetworkRecord_Complete */
  uint8_t ssid[32];      /**< the name, without a terminating NUL */
  uint8_t bssid[6];      /**< the access point's address, first octet first */
  uint8_t ssidLength;    /**< how many bytes of `ssid` are the name */
  WifiSecurity security; /**< a WifiSecurity constant */
  uint32_t frequencyMhz; /**< the channel's centre frequency */
  int8_t signalDbm;      /**< always 0: the daemon's status does not tell */
} WifiCurrentNetworkRecord;

/**
 * Starts a scan, then keeps the networks that the daemon knows at that moment, which are as a rule
 * those of the scan before: the function does not wait for the new one, which takes some seconds.
 * Call it again later for its results.
 *
 * Two exchanges. Replaces the list of scanned networks, unless it fails.
 *
 * The first 100 networks are kept. When there are more, prints "Number of networks from scan
 * exceeded the limit." without a newline. Networks without a name are left out, and so are those of
 * which the daemon's text cannot be understood.
 *
 * @return the number of networks kept, 0 to 100; or -1 with errno set: daemon errors, before whose
 *   own line "[Kestrel:WifiConfig] Failure performing scan: NUMBER" is printed, with the same
 * NUMBER, or 6 where the daemon refused. It refuses while a scan is running.
 */
KESTREL_API int WifiConfig_TriggerScanAndGetScannedNetworkCount(void);

/**
 * Moves the kept list of scanned networks into an array and leaves the list empty: a scan can be
 * read once. Networks beyond `networkArrayCount` are dropped.
 *
 * No exchange (the process's first Wi-Fi call connects).
 *
 * A network whose frequency or signal level is 0 or out of range, or whose address is malformed, is
 * left out, so fewer records may be filled than the list and the array allow; errno may then be set
 * although the call succeeds. Prints "[Kestrel:WifiConfig] Error parsing network property: 4" for a
 * network that lacks a property. Slots that receive no network get `recordTag` 0 and may hold
 * parts of a network that was left out.
 *
 * @param networkArray      array of the caller's, with slack behind it (see 9. above)
 * @param networkArrayCount its number of records
 * @param structVersion     WifiConfig_StructVersion
 * @return the number of records filled, from the first on; or -1 with errno set, without a message:
 *   - EFAULT: `networkArray` is null.
 *   - ERANGE: `networkArrayCount` is 0.
 *   - EINVAL: `structVersion` is another one. The kept list is emptied all the same.
 */
KESTREL_API int z__WifiConfig_GetScannedNetworks(WifiScannedNetworkRecord* networkArray,
                                                 size_t networkArrayCount, uint32_t structVersion);

/**
 * Asks the daemon for its stored networks and keeps them for z__WifiConfig_GetStoredNetworks().
 *
 * 2 + 2 n exchanges for n networks. Replaces the list of stored networks, unless it fails.
 *
 * @return the number of networks; or -1 with errno set: daemon errors
 */
KESTREL_API int WifiConfig_GetStoredNetworkCount(void);

/**
 * Copies the kept list of stored networks into an array. The list stays, and is as old as the last
 * successful WifiConfig_GetStoredNetworkCount(); before one it is empty.
 *
 * No exchange (the process's first Wi-Fi call connects).
 *
 * A network without a name is left out after printing
 * "[Kestrel:WifiConfig] Error parsing network property: 4"; the call succeeds with errno ENODATA. A
 * network whose name the daemon refused to tell has the name "NONE". Slots that receive no network
 * get `recordTag` 0.
 *
 * @param records       array of the caller's, with slack behind it (see 9. above)
 * @param recordCount   its number of records
 * @param structVersion WifiConfig_StructVersion
 * @return the number of records filled, from the first on; or -1 with errno set, without a message:
 *   - EFAULT: `records` is null.
 *   - ERANGE: `recordCount` is 0.
 *   - EINVAL: `structVersion` is another one.
 */
KESTREL_API int z__WifiConfig_GetStoredNetworks(WifiStoredNetworkRecord* records,
                                                size_t recordCount, uint32_t structVersion);

/**
 * Stores a WPA2 network, enables it and makes the daemon save its configuration. Whether the daemon
 * can connect to it shows later, in z__WifiConfig_GetCurrentNetwork().
 *
 * 7 + 2 n exchanges with n networks stored.
 *
 * There is no way back from a failure half-way: the daemon may keep a network without a name, or
 * one that is not enabled or not saved. The daemon's answer to the passphrase is not looked at.
 *
 * A double quote in the name or the passphrase is sent as the four characters `\x22`, and nothing
 * else is escaped. Supplicants keep these four as they are: what is stored is then another name, by
 * which EEXIST and z__WifiConfig_ForgetNetwork() know the network, or another passphrase, which is
 * wrong.
 *
 * @param ssid       the name; every byte has to be printable ASCII, 0x20 to 0x7E
 * @param ssidLength 1 to 32
 * @param psk        the passphrase, NUL-terminated; 8 to 63 printable ASCII characters. All of it
 *                   counts, whatever `pskLength` says.
 * @param pskLength  1 to 64
 * @return 0, or -1 with errno set:
 *   - EFAULT: `ssid` or `psk` is null; ERANGE: `ssidLength` or `pskLength` is out of its range.
 *     `ssid` and its length are checked first. Prints nothing.
 *   - EINVAL: the name or the passphrase has other bytes than it may or, the passphrase, another
 *     length. Prints nothing.
 *   - EEXIST: a network of this name is stored already, whatever its security. Prints nothing. When
 *     the daemon does not tell its networks, none counts as stored.
 *   - EIO: the daemon gave the network an id above 100, and keeps it. Prints
 *     "[Kestrel:WifiConfig] Error performing operation: 7".
 *   - daemon errors; a connection that fails while the stored networks are listed shows in the next
 *     exchange, so as EIO with 22
 */
KESTREL_API int WifiConfig_StoreWpa2Network(const uint8_t* ssid, size_t ssidLength, const char* psk,
                                            size_t pskLength);

/**
 * Stores a network without security, as WifiConfig_StoreWpa2Network() stores one with a passphrase.
 *
 * 7 + 2 n exchanges with n networks stored.
 *
 * @return 0, or -1 with errno set as by WifiConfig_StoreWpa2Network()
 */
KESTREL_API int WifiConfig_StoreOpenNetwork(const uint8_t* ssid, size_t ssidLength);

/**
 * Tells which network the daemon is connected to, or is connecting to.
 *
 * One exchange.
 *
 * @param connectedNetwork receives the network, with slack behind it (see 9. above). After a
 *   failure its `recordTag` is 0x09EF0000 and the other fields may be written, unless an argument
 *   was refused: then it is untouched.
 * @param structVersion    WifiConfig_StructVersion
 * @return 0, or -1 with errno set:
 *   - EFAULT: `connectedNetwork` is null; EINVAL: `structVersion` is another one. Prints nothing.
 *   - ENODATA: the daemon is not connected, or does not tell name, address and frequency. Prints
 *     "[Kestrel:WifiConfig] Error parsing network property: 4".
 *   - EINVAL: the address is malformed; ERANGE: the frequency is no number, or 0. Prints nothing.
 *   - daemon errors; afterwards prints "[Kestrel:WifiConfig] Failure getting status of current
 *     network: NUMBER", with 6 where the daemon refused
 */
KESTREL_API int z__WifiConfig_GetCurrentNetwork(WifiCurrentNetworkRecord* connectedNetwork,
                                                uint32_t structVersion);

/**
 * Removes a stored network, and makes the daemon save its configuration. The first network of the
 * daemon's list with the record's name and security goes; others like it stay. The list that
 * z__WifiConfig_GetStoredNetworks() copies is not touched.
 *
 * 5 + 2 n exchanges with n networks stored. There is no way back from a failure half-way: the
 * network may then be disabled, or removed and not saved.
 *
 * @param storedNetwork a record from z__WifiConfig_GetStoredNetworks(); `recordTag`, `ssid`,
 *   `ssidLength` and `security` count. `ssidLength` is trusted: above 32, bytes behind `ssid` are
 *   read, up to 219 of them behind the record. No record that the library filled in matches then,
 *   because its fields lie over the name.
 * @return 0, or -1 with errno set:
 *   - EFAULT: `storedNetwork` is null; EINVAL: its `recordTag` is not
 *     WifiStoredNetworkRecord_Complete. Prints nothing.
 *   - ENOENT: no stored network has this name and this security. Prints nothing.
 *   - daemon errors
 */
KESTREL_API int z__WifiConfig_ForgetNetwork(const WifiStoredNetworkRecord* storedNetwork);

/**
 * Removes all stored networks, one after the other, and makes the daemon save its configuration
 * after each. Stops at the first failure: what came before is gone, what comes after is untouched.
 *
 * 2 + 5 n exchanges with n networks stored.
 *
 * @return 0, or -1 with errno set: daemon errors
 */
KESTREL_API int WifiConfig_ForgetAllNetworks(void);

KESTREL_END_DECLS

#endif /* KESTREL_WIFICONFIG_H */
