// SPDX-License-Identifier: Apache-2.0
// What a copy of an appliance's kernel has to have before anything is compared with it.
#include "tools/ctl/preview/kernel_copy.h"

#include <gmock/gmock.h>

namespace kestrove::testing {
namespace {

using ctl::Json;

TEST(KernelCopy, IsWaitedForUntilTheKernelHasMadeItsOwn) {
  const std::string made = "local fe80::1 dev br0 table local proto kernel metric 0 pref medium\n";
  const std::string given = "2001:db8::/32 via fe80::2 dev br0 metric 1024 pref medium\n";
  const Json appliance = {{"links", Json::array()}, {"state", {{"routes6", made + given}}}};
  EXPECT_FALSE(ctl::preview::hasItsOwn(appliance, {{"routes6", given}}));
  EXPECT_TRUE(ctl::preview::hasItsOwn(appliance, {{"routes6", made}})) << "what was refused never comes";
  EXPECT_THAT(ctl::preview::missingLines(appliance, {{"routes6", made}}), ::testing::SizeIs(1));
}

}  // namespace
}  // namespace kestrove::testing
