// SPDX-License-Identifier: Apache-2.0
// The netlink request to the byte, and the wait for its acknowledgement.

#include <errno.h>
#include <gmock/gmock.h>
#include <linux/netlink.h>
#include <net/if.h>
#include <string.h>

#include "kestrove/kestrove.h"
#include "tests/support/addresses.h"
#include "tests/support/kernel.h"
#include "tests/support/kernel_calls.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string little32(unsigned value) {
  char text[9];
  snprintf(text, sizeof text, "%02x%02x%02x%02x", value & 0xff, (value >> 8) & 0xff, (value >> 16) & 0xff, value >> 24);
  return text;
}

std::string indexOf(const char* name) { return little32(if_nametoindex(name)); }

// An NLMSG_ERROR message as the kernel sends it.
std::string acknowledgement(int error, unsigned payload = sizeof(nlmsgerr)) {
  struct {
    nlmsghdr header;
    nlmsgerr body;
  } message = {};
  message.header.nlmsg_len = NLMSG_LENGTH(payload);
  message.header.nlmsg_type = NLMSG_ERROR;
  message.body.error = error;
  return std::string(reinterpret_cast<char*>(&message), message.header.nlmsg_len);
}

std::string otherMessage() {
  nlmsghdr header = {};
  header.nlmsg_len = sizeof header;
  header.nlmsg_type = NLMSG_NOOP;
  return std::string(reinterpret_cast<char*>(&header), sizeof header);
}

// eth0 and 10.1.2.3, as every message has them.
const std::string kLabelAndLocal =
    "09000300"
    "6574683000000000"
    "08000200"
    "0a010203";

class Netlink : public ::testing::Test {
 protected:
  void SetUp() override {
    watchKernel(Kernel::kReal);
    errno = 0;
  }
  int add() { return shm_netlinkConfig("eth0", quad("10.1.2.3"), quad("255.255.0.0"), 0, 1); }
};

TEST_F(Netlink, AddingSendsLabelLocalAndBroadcast) {
  EXPECT_EQ(0, add());
  EXPECT_THAT(messagesSent(), ElementsAre("34000000"  // 52 bytes
                                          "1400"      // RTM_NEWADDR
                                          "0506"      // REQUEST, ACK, EXCL, CREATE
                                          "01000000"  // the first of this process
                                          "00000000"
                                          "02108000" +
                                          indexOf("eth0") + kLabelAndLocal +
                                          "08000400"
                                          "0a01ffff"));
  EXPECT_THAT(socketsOpened(), ElementsAre("16/3/0"));
}

TEST_F(Netlink, DeletingSendsNoBroadcast) {
  ASSERT_EQ(0, add());
  EXPECT_EQ(0, shm_netlinkConfig("eth0", quad("10.1.2.3"), quad("255.255.0.0"), quad("10.1.0.9"), -1));
  EXPECT_EQ(
      "2c000000"
      "1500"  // RTM_DELADDR
      "0500"  // REQUEST, ACK
      "02000000"
      "00000000"
      "02108000" +
          indexOf("eth0") + kLabelAndLocal,
      messagesSent().at(1));
}

TEST_F(Netlink, GivenBroadcastIsSent) {
  EXPECT_EQ(0, shm_netlinkConfig("eth0", quad("10.1.2.3"), quad("255.255.0.0"), quad("10.1.0.9"), 0));
  EXPECT_EQ("0a010009", messagesSent().at(0).substr(96));
}

TEST_F(Netlink, LongestNameFitsInTheRequest) {
  tried("/sbin/ip link add abcdefghijklmno type veth peer name peer0");
  EXPECT_EQ(0, shm_netlinkConfig("abcdefghijklmno", quad("10.1.2.3"), quad("255.255.0.0"), 0, 1));
  EXPECT_EQ(2u * 60u, messagesSent().at(0).size());
  EXPECT_EQ(
      "14000300"
      "6162636465666768696a6b6c6d6e6f00",
      messagesSent().at(0).substr(48, 40));
}

TEST_F(Netlink, UnknownInterfaceSendsNothing) {
  for (const std::string& name : {std::string("nosuch"), std::string(), std::string(300, 'a')}) {
    clearSyslog();
    EXPECT_EQ(-1, shm_netlinkConfig(name.c_str(), quad("10.1.2.3"), quad("255.255.0.0"), 0, 1));
    EXPECT_EQ(ENODEV, errno);
    EXPECT_THAT(syslogLines(), ElementsAre("debug: if_nametoindex failed"));
  }
  EXPECT_THAT(messagesSent(), IsEmpty());
  EXPECT_FAILS_WITH(SHM_EINVAL, shm_netlinkConfig(nullptr, 0, 0, 0, 0));
}

struct Refusal {
  const char* call;
  const char* text;
};

TEST_F(Netlink, EachRefusedStepIsLoggedAndFails) {
  failCall("bind", 1, EPERM);
  add();  // the log is open from here on
  int before = openDescriptors();
  for (const Refusal& refusal :
       {Refusal{"socket", "debug: send_netlink socket failed"}, Refusal{"bind", "debug: send_netlink bind failed"},
        Refusal{"sendmsg", "debug: sendmsg failed"}}) {
    clearSyslog();
    failCall(refusal.call, 1, EPERM);
    shm_errno = 99;
    EXPECT_EQ(-1, add()) << refusal.call;
    EXPECT_EQ(EPERM, errno) << refusal.call;
    EXPECT_EQ(99u, shm_errno);
    EXPECT_THAT(syslogLines(), ElementsAre(refusal.text, "debug: send_netlink failed"));
  }
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(Netlink, ErrorInTheAcknowledgementShowsInErrnoAlone) {
  answerReceive(acknowledgement(-EACCES));
  EXPECT_EQ(0, add());
  EXPECT_EQ(EACCES, errno);
  EXPECT_THAT(syslogLines(), IsEmpty());
}

TEST_F(Netlink, ShortAcknowledgementIsABadMessageAndEndsTheWait) {
  answerReceive(acknowledgement(0, sizeof(nlmsgerr) - 1));
  EXPECT_EQ(0, add());
  EXPECT_EQ(EBADMSG, errno);
  EXPECT_EQ(1, callsOf("recv"));
}

TEST_F(Netlink, OtherMessagesAreSkipped) {
  answerReceive(otherMessage() + otherMessage());
  answerReceive(otherMessage() + acknowledgement(-EBUSY));
  EXPECT_EQ(0, add());
  EXPECT_EQ(EBUSY, errno);
  EXPECT_EQ(2, callsOf("recv"));
}

TEST_F(Netlink, InterruptedReadIsRetried) {
  failCall("recv", 1, EINTR);
  EXPECT_EQ(0, add());
  EXPECT_EQ(2, callsOf("recv"));
}

TEST_F(Netlink, ReadThatWouldBlockEndsTheWait) {
  failCall("recv", 1, EAGAIN);
  EXPECT_EQ(0, add());
  EXPECT_EQ(1, callsOf("recv"));
}

TEST(Prefix, CountsTheShiftsUntilNothingIsLeft) {
  EXPECT_EQ(24, inet_ntocidr(quad("255.255.255.0")));
  EXPECT_EQ(0, inet_ntocidr(0));
  EXPECT_EQ(32, inet_ntocidr(0xffffffff));
  EXPECT_EQ(1, inet_ntocidr(quad("128.0.0.0")));
  EXPECT_EQ(24, inet_ntocidr(quad("255.0.255.0"))) << "holes count";
}

}  // namespace
}  // namespace kestrove::testing
