/* SPDX-License-Identifier: Apache-2.0 */
/* Address, text, line and time utilities.

   None of them logs an event or signals the engine, and only changeDnsServerIp takes the lock and saves. Only
   GetDefaultGW, neighb_mac and changeDnsServerIp have to do with the kernel. IPv4 addresses and masks are words in
   network byte order, IPv6 addresses 16 bytes in network order. A null pointer where a text or an output is needed
   gives -1 with code 3 and changes nothing; functions without a result then do nothing. */
#ifndef KESTROVE_TEXT_H
#define KESTROVE_TEXT_H

#include <stdint.h>
#include <stdio.h>
#include <time.h>
#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Lines of a stream, read one after the other. */
typedef struct ReadFilter {
  FILE* stream;
  int32_t squeeze;   /* not 0: collapse blanks */
  char delimiter;    /* ends a line */
  int32_t lineCount; /* lines read that held at least one character */
} ReadFilter;

/* Reads a strict dotted quad: four decimal octets. The text is rewritten in place to its plain form ("010.001.000.001"
   becomes "10.1.0.1"), octet by octet, also when a later one is bad. 0, or -1: code 13 for an empty, non-decimal or too
   large octet, 14 for a missing dot, 3 for an empty text. */
KESTROVE_API int parseIpv4Address(char* text, uint32_t* out);

/* 0 for a mask without holes (0 and all ones included), else -1 with code 3. */
KESTROVE_API int validateNetmask(const uint32_t* mask);

/* As parseIpv4Address, for a unicast address: 0.0.0.0, 127.x.x.x and everything above 223.255.255.255 give -1 with code
   3. Every failure sets *out to 0. */
KESTROVE_API int validateManagementAddress(char* text, uint32_t* out);

/* 0, or -1 with code 16. */
KESTROVE_API int parseIpv6Address(const char* text, void* out16);

/* Gives the dotted text in a buffer that the next call reuses. */
KESTROVE_API const char* ipv4_to_a(uint32_t addr);

/* Writes the text of an IPv6 address. 0, or -1 (without a code) for a buffer below 46 bytes, even where it was written,
   or below what the text needs. */
KESTROVE_API int ipv6_to_a(const void* addr16, char* buf, int len);

/* Prefix length of a mask, 1 to 32; -1 (without a code) for 0.0.0.0 and for a mask with holes. */
KESTROVE_API int netMaskCIDRNumber(uint32_t mask);

/* Writes network and prefix length, as "10.1.0.0/16", into at least 19 bytes. 0; -1 (without a code) for a smaller
   buffer or a mask that has no prefix length. */
KESTROVE_API int getCIDRSubnet(uint32_t addr, uint32_t mask, char* dst, int len);

/* 0 when min <= value <= max, else -1 with code 12. */
KESTROVE_API int validateIntInBounds(int value, int min, int max);

/* Copies a text into a field of 256 bytes. 0; -1 with code 12 for a text of 256 characters or more: the field stays as
   it is and a warning is logged. */
KESTROVE_API int stringCopy(char* dst, const char* src);

/* Reads a line up to its newline, which is not stored, into a buffer of size bytes. The number of characters stored;
   size when the line was too long (what does not fit is read and dropped); -1: code 3 for a size below 1, 11 at end of
   file, 2 for a stream error. */
KESTROVE_API int readLine(char* buf, int size, FILE* stream);

/* As readLine; blanks at both ends vanish, and each run of blanks, tabs and unprintable characters becomes one space.
 */
KESTROVE_API int readCommandLine(char* buf, int size, FILE* stream);

/* Prepares a filter for a stream; lineCount becomes 0. */
KESTROVE_API void ReadFilter_init(ReadFilter* f, FILE* stream, int squeeze, char delimiter);

/* As readLine, with the filter's settings. */
KESTROVE_API int ReadFilter_readLine(ReadFilter* f, char* buf, int size);

/* Writes a time as UTC: its date with an strftime format into dateOut, its time as "%T" into timeOut. Either may be
   null; both hold 256 bytes. A text that does not fit becomes empty. A time that has no calendar form writes nothing.
 */
KESTROVE_API void formatTime(char* dateOut, char* timeOut, const char* format, const time_t* when);

/* formatTime of now. */
KESTROVE_API void getSystemTime(char* dateOut, char* timeOut, const char* format);

/* Copies the gateway of the kernel's first default route, in the kernel's hexadecimal text ("0101A8C0"; up to 127
   characters and the terminator), into dst. 1 when there is one, else 0. */
KESTROVE_API int GetDefaultGW(char* dst);

/* Asks for the hardware address of a neighbour with count ARP requests through the program arping and copies its text
   (up to 17 characters and the terminator) into dst. 0; -1 (without a code, logged) when nobody answers, or when the
   address or the interface name is not plain enough for a command line. */
KESTROVE_API int neighb_mac(int count, const char* ifname, const char* ip, char* dst);

/* Removes /etc/resolv.conf. 0, or -1 (without a code). */
KESTROVE_API int removeResolvConf(void);

/* Makes addr the only name server in /etc/resolv.conf and drives event 19 of the operating modes, which applies the
   management addresses to the kernel's interfaces again and saves the store. 0; -1 with the lock's code, or without one
   when the file cannot be written. Takes the lock from beginning to end. */
KESTROVE_API int changeDnsServerIp(uint32_t addr);

#ifdef __cplusplus
}
#endif

#endif
