/* Packet-filter reset and policy routing in the kernel. */
#ifndef KESTROVE_KERNELRULES_H
#define KESTROVE_KERNELRULES_H

#include "kestrove/layout.h"
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API extern FILE* fp;

KESTROVE_API int updateKernelRules(void);
KESTROVE_API int addToRestoreFile(const char* line);
KESTROVE_API int flushExistingChains(void);
KESTROVE_API int deleteExistingChains(void);
KESTROVE_API int commitHandler(void);
KESTROVE_API int addIp6tablesDropRule(void);
KESTROVE_API int resetPolicyRules(void);
KESTROVE_API void pbrPolicyRule(int lock);

#ifdef __cplusplus
}
#endif

#endif
