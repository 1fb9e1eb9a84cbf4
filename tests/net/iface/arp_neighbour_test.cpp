// SPDX-License-Identifier: Apache-2.0
// The permanent entry of a neighbour that answers a probe.

#include <gmock/gmock.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/kernel_calls.h"
#include "tests/support/recorder.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PermanentArp : public ::testing::Test {
 protected:
  void SetUp() override { watchKernel(Kernel::kPretend); }
};

TEST_F(PermanentArp, TakesTheNeighboursAnswer) {
  answer("arping", "ARPING 10.0.0.2\nUnicast reply from 10.0.0.2 [02:00:00:00:01:FF]  0.6ms\n");
  EXPECT_EQ(0, setPermArpEntry(quad("10.0.0.2"), "eth0"));
  EXPECT_THAT(programs(), ElementsAre("/usr/bin/arping 10.0.0.2 -I eth0 -c 2"));
  EXPECT_THAT(kernelCalls(), ElementsAre("SIOCSARP 10.0.0.2 02:00:00:00:01:ff flags 6"));
}

TEST_F(PermanentArp, WithoutAnAnswerItGoesOnAndFails) {
  answer("arping", "Sent 2 probes\n", 1);
  EXPECT_EQ(-1, setPermArpEntry(quad("10.0.0.2"), "eth0"));
  EXPECT_THAT(kernelCalls(), IsEmpty());
  EXPECT_EQ("err: fail to get neighb_mac \n", syslogLines().back());
}

}  // namespace
}  // namespace kestrove::testing
