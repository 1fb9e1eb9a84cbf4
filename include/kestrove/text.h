/* Address, text, line and time utilities. */
#ifndef KESTROVE_TEXT_H
#define KESTROVE_TEXT_H

#include "kestrove/layout.h"
#include <stdint.h>
#include <stdio.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ReadFilter {
  FILE* stream;
  int32_t squeeze;
  char delimiter;
  int32_t lineCount;
} ReadFilter;

KESTROVE_API int parseIpv4Address(char* text, uint32_t* out);
KESTROVE_API int validateNetmask(const uint32_t* mask);
KESTROVE_API int validateManagementAddress(char* text, uint32_t* out);
KESTROVE_API int parseIpv6Address(const char* text, void* out16);
KESTROVE_API const char* ipv4_to_a(uint32_t addr);
KESTROVE_API int ipv6_to_a(const void* addr16, char* buf, int len);
KESTROVE_API int netMaskCIDRNumber(uint32_t mask);
KESTROVE_API int getCIDRSubnet(uint32_t addr, uint32_t mask, char* dst, int len);
KESTROVE_API int validateIntInBounds(int value, int min, int max);
KESTROVE_API int stringCopy(char* dst, const char* src);
KESTROVE_API int readLine(char* buf, int size, FILE* stream);
KESTROVE_API int readCommandLine(char* buf, int size, FILE* stream);
KESTROVE_API void ReadFilter_init(ReadFilter* f, FILE* stream, int squeeze, char delimiter);
KESTROVE_API int ReadFilter_readLine(ReadFilter* f, char* buf, int size);
KESTROVE_API void formatTime(char* dateOut, char* timeOut, const char* format, const time_t* when);
KESTROVE_API void getSystemTime(char* dateOut, char* timeOut, const char* format);
KESTROVE_API int GetDefaultGW(char* dst);
KESTROVE_API int neighb_mac(int count, const char* ifname, const char* ip, char* dst);
KESTROVE_API int removeResolvConf(void);
KESTROVE_API int changeDnsServerIp(uint32_t addr);

#ifdef __cplusplus
}
#endif

#endif
