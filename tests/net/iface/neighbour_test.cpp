// SPDX-License-Identifier: Apache-2.0
// The hardware address that a neighbour answers with.
#include <gmock/gmock.h>

#include "kestrove/kestrove.h"
#include "tests/support/recorder.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Neighbours, AnswerGivesTheTextBetweenTheBrackets) {
  answer("arping",
         "ARPING 10.0.0.1 from 10.0.0.2 eth0\nUnicast reply from 10.0.0.1 [00:11:22:33:44:55]  0.8ms\n"
         "Unicast reply from 10.0.0.1 [66:77:88:99:AA:BB]  0.8ms\n");
  char mac[18] = "";
  EXPECT_EQ(0, neighb_mac(3, "eth0", "10.0.0.1", mac));
  EXPECT_STREQ("00:11:22:33:44:55", mac);
  EXPECT_THAT(shellLines(), ElementsAre("/usr/bin/arping 10.0.0.1 -I eth0 -c 3"));
  EXPECT_THAT(syslogLines(), IsEmpty());
}

TEST(Neighbours, AnswerWithoutBracketsIsNone) {
  answer("arping", "Unicast reply from 10.0.0.1\nUnicast reply ]x[\nUnicast reply [22]\n");
  char mac[18] = "";
  EXPECT_EQ(0, neighb_mac(1, "eth0", "10.0.0.1", mac));
  EXPECT_STREQ("22", mac);
}

TEST(Neighbours, LongAnswerIsCutToAHardwareAddress) {
  answer("arping", "Unicast reply [00:11:22:33:44:55:66:77:88]\n");
  char mac[18] = "";
  EXPECT_EQ(0, neighb_mac(1, "eth0", "10.0.0.1", mac));
  EXPECT_STREQ("00:11:22:33:44:55", mac);
}

TEST(Neighbours, SilenceIsLoggedWithTheLastLine) {
  answer("arping", "ARPING 10.0.0.1\nReceived 0 response(s)\n", 1);
  char mac[18] = "kept";
  shm_errno = 99;
  EXPECT_EQ(-1, neighb_mac(1, "eth0", "10.0.0.1", mac));
  EXPECT_STREQ("kept", mac);
  EXPECT_EQ(99u, shm_errno);
  EXPECT_THAT(syslogLines(), ElementsAre("err: fail to retrieve Received 0 response(s)\n\n"));
}

TEST(Neighbours, NoOutputIsLoggedWithTheCommand) {
  char mac[18];
  EXPECT_EQ(-1, neighb_mac(-2, "eth0", "10.0.0.1", mac));
  EXPECT_THAT(syslogLines(), ElementsAre("err: fail to retrieve /usr/bin/arping 10.0.0.1 -I eth0 -c -2\n"));
}

TEST(Neighbours, WhatIsNotPlainNeverReachesTheShell) {
  char mac[18];
  EXPECT_EQ(-1, neighb_mac(1, "eth0;reboot", "10.0.0.1", mac));
  EXPECT_EQ(-1, neighb_mac(1, "eth0", "$(reboot)", mac));
  EXPECT_THAT(shellLines(), IsEmpty());
  EXPECT_EQ(2u, syslogLines().size());
}

TEST(Neighbours, NullIsRefused) {
  char mac[18];
  EXPECT_FAILS_WITH(SHM_EINVAL, neighb_mac(1, nullptr, "10.0.0.1", mac));
  EXPECT_FAILS_WITH(SHM_EINVAL, neighb_mac(1, "eth0", nullptr, mac));
  EXPECT_FAILS_WITH(SHM_EINVAL, neighb_mac(1, "eth0", "10.0.0.1", nullptr));
}

}  // namespace
}  // namespace kestrove::testing
