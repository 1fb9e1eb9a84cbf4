/* The ordered table of traffic policy rules. */
#ifndef KESTROVE_RULES_H
#define KESTROVE_RULES_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int insertRule(int position, FilterRule* rule);
KESTROVE_API int addRule(int position, FilterRule* rule, int a, int b);
KESTROVE_API int moveRule(int from, int to);
KESTROVE_API int changeRule(int position, FilterRule* rule);
KESTROVE_API int deleteRule(int position);
KESTROVE_API int getRuleTableEntry(int position, FilterRule* out);
KESTROVE_API int getRuleCount(void);
KESTROVE_API int saveRuleTable(void);

#ifdef __cplusplus
}
#endif

#endif
