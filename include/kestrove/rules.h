/* SPDX-License-Identifier: Apache-2.0 */
/* The ordered table of traffic policy rules.

   The engine consults the table first-match in its order. It is never empty: its last rule, the default rule, matches
   everything, and nothing here moves, changes or deletes it or puts a rule behind it. Positions count from 0.

   Every function that edits works under the store lock and ends with the change tail: in Configuration Mode nothing;
   otherwise the store is saved (a failed save does not change the result) and, but for Debug Mode, the bit of the rules
   is set in pendingChanges and the engine signalled. None logs an event or touches the kernel. All give 0, or -1 with a
   code in shm_errno and the table as it was; without the lock -1 with the lock's code. A null rule or out: SHM_EINVAL.

   A rule that is handed in is normalised in place, also when the operation then fails: the fields of a family that it
   does not match become 0 (ipVersion 4: the IPv6 ones; 6: the IPv4 ones; 1: both), a bandwidth below the
   configuration's minRate becomes minRate, and an active rule (ruleAction 3) has its addresses cut to their networks
   and, for UDP, accel set to 2. Addresses and masks are in network byte order, bandwidth is in bits per second. */
#ifndef KESTROVE_RULES_H
#define KESTROVE_RULES_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Puts a copy of the rule at the position; the rules from there on move one place back. The highest position is that
   of the default rule, so the new rule is always in front of it. The copy has order 0, the caller's order stays.
   SHM_EMASK: an IPv4 rule whose dstMask or srcMask is no netmask. SHM_EINVAL: position outside 0 to ruleCount - 1.
   SHM_EFULL: 8192 rules in use. */
KESTROVE_API int insertRule(int position, FilterRule* rule);

/* The same as insertRule; a and b are ignored. */
KESTROVE_API int addRule(int position, FilterRule* rule, int a, int b);

/* Takes the rule out and puts it in front of the rule that is now at position to. To its own place or the one behind
   it: 0 without the change tail. SHM_EINVAL: a position out of range. SHM_EREADONLY: from is the default rule. */
KESTROVE_API int moveRule(int from, int to);

/* Replaces the rule at the position, order included. SHM_EINVAL: position out of range. SHM_EREADONLY: the default
   rule. SHM_EMASK: as insertRule; the caller's bandwidth has been raised by then. */
KESTROVE_API int changeRule(int position, FilterRule* rule);

/* Removes the rule; those behind it move one place forward. SHM_EINVAL and SHM_EREADONLY as changeRule. */
KESTROVE_API int deleteRule(int position);

/* Copies the rule at the position. SHM_EINVAL: position out of range, out is left as it was. */
KESTROVE_API int getRuleTableEntry(int position, FilterRule* out);

/* The number of rules as the store holds it, the default rule included. Without the lock: -1 with SHM_EINVAL. */
KESTROVE_API int getRuleCount(void);

/* The change tail alone, for a caller that holds the lock or accepts the race: takes no lock of its own and attaches
   the store where needed. -1 without a code in Configuration Mode, -1 with SHM_EATTACH without a store, else 0. */
KESTROVE_API int saveRuleTable(void);

#ifdef __cplusplus
}
#endif

#endif
