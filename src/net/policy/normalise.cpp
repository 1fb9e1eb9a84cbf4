// SPDX-License-Identifier: Apache-2.0
#include "net/policy/normalise.h"
#include "kestrove/codes.h"

#include <string.h>

#include "kestrove/segment.h"
#include "kestrove/text.h"

namespace kestrove {
namespace {

constexpr uint32_t kAddressBytes = 16;

void clearIpv4(FilterRule& rule) { rule.srcAddr = rule.srcMask = rule.dstAddr = rule.dstMask = 0; }

void clearIpv6(FilterRule& rule) {
  memset(rule.srcAddr6, 0, sizeof rule.srcAddr6);
  memset(rule.dstAddr6, 0, sizeof rule.dstAddr6);
  rule.srcPrefixLen6 = rule.dstPrefixLen6 = 0;
}

// Only the low byte of the length counts: 256 cuts to nothing, as 0 does.
void cutToPrefix(uint8_t (&address)[kAddressBytes], uint32_t prefixLength) {
  uint32_t length = prefixLength & 0xFF;
  uint32_t whole = length / 8;
  if (whole >= kAddressBytes) return;
  address[whole] = static_cast<uint8_t>(address[whole] & (0xFF00u >> (length % 8)));
  memset(address + whole + 1, 0, kAddressBytes - whole - 1);
}

}  // namespace

void clearOtherFamilies(FilterRule& rule) {
  if (rule.ipVersion == SHM_FAMILY_IPV4 || rule.ipVersion == SHM_FAMILY_ANY) clearIpv6(rule);
  if (rule.ipVersion == SHM_FAMILY_IPV6 || rule.ipVersion == SHM_FAMILY_ANY) clearIpv4(rule);
}

bool masksAreValid(const FilterRule& rule) {
  if (rule.ipVersion != SHM_FAMILY_IPV4) return true;
  return validateNetmask(&rule.dstMask) == 0 && validateNetmask(&rule.srcMask) == 0;
}

void raiseBandwidth(FilterRule& rule) {
  int32_t least = static_cast<int32_t>(shm->config.minRate);
  if (rule.bandwidth < least) rule.bandwidth = least;
}

void reduceActiveRule(FilterRule& rule) {
  if (rule.ruleAction != SHM_RULE_ACTIVE) return;
  if (rule.ipVersion == SHM_FAMILY_IPV4) {
    rule.srcAddr &= rule.srcMask;
    rule.dstAddr &= rule.dstMask;
  } else if (rule.ipVersion == SHM_FAMILY_IPV6) {
    cutToPrefix(rule.srcAddr6, rule.srcPrefixLen6);
    cutToPrefix(rule.dstAddr6, rule.dstPrefixLen6);
  }
  if (rule.proto == SHM_PROTO_UDP) rule.accel = SHM_OFF;
}

}  // namespace kestrove
