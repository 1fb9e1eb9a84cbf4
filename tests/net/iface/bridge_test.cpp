// SPDX-License-Identifier: Apache-2.0
// The bridge by the kernel's first bridge requests, against the real kernel.

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include "kestrove/kestrove.h"
#include "tests/support/kernel.h"
#include "tests/support/kernel_calls.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::ExitedWithCode;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kSurvived = 77;

std::string bridgeOf(const char* port) {
  std::string link = tried(std::string("readlink /sys/class/net/") + port + "/master");
  return link.empty() ? "" : link.substr(link.rfind('/') + 1, link.size() - link.rfind('/') - 2);
}

bool bridgeExists(const std::string& name) { return fileExists("/sys/class/net/" + name + "/bridge"); }

class Bridge : public ::testing::Test {
 protected:
  void SetUp() override {
    watchKernel(Kernel::kReal);
    before_ = openDescriptors();
  }
  void TearDown() override { EXPECT_EQ(before_ + (br_socket_fd >= 0), openDescriptors()); }
  int before_ = 0;
};

// The statement ends the process with status 0 before it comes to an end.
#define EXPECT_FATAL(statement) \
  EXPECT_EXIT(                  \
      {                         \
        statement;              \
        _exit(kSurvived);       \
      },                        \
      ExitedWithCode(0), "")

TEST_F(Bridge, SocketIsOpenedAndClosed) {
  EXPECT_EQ(-1, br_socket_fd);
  EXPECT_EQ(0, br_init());
  EXPECT_LE(0, br_socket_fd);
  EXPECT_THAT(socketsOpened(), ElementsAre("1/1/0"));
  EXPECT_EQ(0, br_close());
  EXPECT_EQ(-1, br_close());
  EXPECT_EQ(EBADF, errno);
}

TEST_F(Bridge, SecondInitLeavesOneSocket) {
  EXPECT_EQ(0, br_init());
  EXPECT_EQ(0, br_init());
}

bool isOpen(int fd) { return fcntl(fd, F_GETFD) != -1; }

TEST_F(Bridge, NumberThatACallerPutThereIsNotClosed) {
  int foreign = open("/dev/null", O_RDONLY | O_CLOEXEC);
  br_socket_fd = foreign;
  EXPECT_EQ(0, br_init());
  EXPECT_NE(foreign, br_socket_fd);
  EXPECT_TRUE(isOpen(foreign));
  int own = br_socket_fd;
  br_socket_fd = foreign;
  EXPECT_EQ(0, br_init());
  EXPECT_TRUE(isOpen(foreign));
  EXPECT_EQ(own, br_socket_fd) << "ours was closed, so its number is free again";
  close(foreign);
}

TEST_F(Bridge, UpAndDownLeaveANumberOfTheCallersOpen) {
  int foreign = open("/dev/null", O_RDONLY | O_CLOEXEC);
  br_socket_fd = foreign;
  EXPECT_EQ(0, set_bridge_up("br0", "eth0", "eth1"));
  EXPECT_TRUE(isOpen(foreign));
  br_socket_fd = foreign;
  EXPECT_EQ(0, set_bridge_down("br0", "eth0", "eth1"));
  EXPECT_TRUE(isOpen(foreign));
  EXPECT_EQ(-1, br_socket_fd);
  close(foreign);
}

TEST_F(Bridge, NumberThatIsAnotherFileByNowIsNotClosed) {
  ASSERT_EQ(0, br_init());
  int number = br_socket_fd;
  close(number);
  ASSERT_EQ(number, open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(0, br_init());
  EXPECT_TRUE(isOpen(number));
  EXPECT_EQ(0, br_close());
  close(number);
  ASSERT_EQ(0, br_init());
  number = br_socket_fd;
  close(number);
  ASSERT_EQ(number, socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  EXPECT_EQ(0, br_init()) << "a socket, but not the one that was opened here";
  EXPECT_TRUE(isOpen(number));
  EXPECT_EQ(0, br_close());
  close(number);
}

TEST_F(Bridge, CloseClosesTheNumberThatStandsThere) {
  ASSERT_EQ(0, br_init());
  int own = br_socket_fd;
  br_socket_fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(0, br_close());
  EXPECT_TRUE(isOpen(own));
  EXPECT_EQ(0, br_init());
  EXPECT_EQ(0, br_close());
}

TEST_F(Bridge, InitWithoutASocketGivesErrno) {
  failCall("socket", 1, EMFILE);
  EXPECT_EQ(EMFILE, br_init());
  EXPECT_EQ(-1, br_socket_fd);
}

TEST_F(Bridge, AddingGivesErrnoOrTheRawResult) {
  ASSERT_EQ(0, br_init());
  EXPECT_EQ(0, br_add_bridge("br0"));
  EXPECT_TRUE(bridgeExists("br0"));
  EXPECT_EQ(EEXIST, br_add_bridge("br0"));
  EXPECT_EQ(-1, br_cmd_addbr("br0"));
  EXPECT_EQ(EEXIST, errno);
  EXPECT_EQ(0, br_cmd_addbr("br1"));
  EXPECT_TRUE(bridgeExists("br1"));
}

TEST_F(Bridge, DeletingGivesErrno) {
  ASSERT_EQ(0, br_init());
  EXPECT_EQ(ENXIO, br_cmd_delbr("br0"));
  ASSERT_EQ(0, br_add_bridge("br0"));
  EXPECT_EQ(0, br_cmd_delbr("br0"));
  EXPECT_FALSE(bridgeExists("br0"));
}

TEST_F(Bridge, LongNamesAreRefusedNotCut) {
  ASSERT_EQ(0, br_init());
  EXPECT_EQ(0, br_add_bridge("abcdefghijklmno"));
  for (const std::string& name : {std::string("abcdefghijklmnop"), std::string(300, 'a')}) {
    EXPECT_EQ(EINVAL, br_add_bridge(name.c_str()));
    EXPECT_EQ(EINVAL, br_cmd_delbr(name.c_str()));
    EXPECT_EQ(-1, br_cmd_addif(nullptr, name.c_str(), "eth0"));
    EXPECT_EQ(-1, br_ioctldev(name.c_str(), 14, 0, 0, 0));
    EXPECT_EQ(nullptr, br_find_bridge(name.c_str()));
  }
  EXPECT_TRUE(bridgeExists("abcdefghijklmno"));
  EXPECT_NE(0, br_add_bridge(""));
}

TEST_F(Bridge, NullIsRefused) {
  EXPECT_FAILS_WITH(SHM_EINVAL, br_add_bridge(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, br_cmd_addbr(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, br_cmd_delbr(nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, br_ioctldev(nullptr, 14, 0, 0, 0));
  EXPECT_FAILS_WITH(SHM_EINVAL, br_cmd_addif(nullptr, nullptr, "eth0"));
  EXPECT_FAILS_WITH(SHM_EINVAL, br_cmd_addif(nullptr, "br0", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, br_cmd_delif(nullptr, nullptr, "eth0"));
  EXPECT_FAILS_WITH(SHM_EINVAL, br_cmd_delif(nullptr, "br0", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, set_bridge_up(nullptr, "eth0", "eth1"));
  EXPECT_FAILS_WITH(SHM_EINVAL, set_bridge_up("br0", nullptr, "eth1"));
  EXPECT_FAILS_WITH(SHM_EINVAL, set_bridge_up("br0", "eth0", nullptr));
  EXPECT_FAILS_WITH(SHM_EINVAL, set_bridge_down(nullptr, "eth0", "eth1"));
  EXPECT_FAILS_WITH(SHM_EINVAL, set_bridge_down("br0", nullptr, "eth1"));
  EXPECT_FAILS_WITH(SHM_EINVAL, set_bridge_down("br0", "eth0", nullptr));
  shm_errno = 99;
  EXPECT_EQ(nullptr, br_find_bridge(nullptr));
  EXPECT_EQ(uint32_t(SHM_EINVAL), shm_errno);
  EXPECT_THAT(socketsOpened(), IsEmpty());
}

TEST_F(Bridge, ArgumentWordsReachTheBridge) {
  ASSERT_EQ(0, br_init());
  ASSERT_EQ(0, br_add_bridge("br0"));
  EXPECT_EQ(0, br_ioctldev("br0", 14, 1, 0, 0));
  EXPECT_EQ("1\n", readFile("/sys/class/net/br0/bridge/stp_state"));
  EXPECT_EQ(0, br_ioctldev("br0", 14, 0, 0, 0));
  EXPECT_EQ("0\n", readFile("/sys/class/net/br0/bridge/stp_state"));
  EXPECT_EQ(-1, br_ioctldev("nosuch", 14, 0, 0, 0));
}

TEST_F(Bridge, FoundBridgeComesWithItsInformation) {
  ASSERT_EQ(0, br_init());
  ASSERT_EQ(0, br_add_bridge("br0"));
  ASSERT_EQ(0, br_add_bridge("br1"));
  void* info = br_find_bridge("br1");
  EXPECT_NE(nullptr, info);
  free(info);
  EXPECT_EQ(nullptr, br_find_bridge("br2"));
  EXPECT_EQ(nullptr, br_find_bridge("eth0"));
  EXPECT_EQ(nullptr, br_find_bridge(""));
}

TEST_F(Bridge, FailedRequestsFindNothing) {
  ASSERT_EQ(0, br_init());
  ASSERT_EQ(0, br_add_bridge("br0"));
  for (int n = 1; n <= 3; ++n) {  // the list, the name, the information
    failCall("ioctl", n, EPERM);
    EXPECT_EQ(nullptr, br_find_bridge("br0")) << n;
  }
}

TEST_F(Bridge, ThirtyTwoBridgesAreLookedAt) {
  ASSERT_EQ(0, br_init());
  int found = 0;
  for (int i = 0; i < 40; ++i) ASSERT_EQ(0, br_add_bridge(("b" + std::to_string(i)).c_str()));
  for (int i = 0; i < 40; ++i) {
    void* info = br_find_bridge(("b" + std::to_string(i)).c_str());
    found += info != nullptr;
    free(info);
  }
  EXPECT_EQ(32, found);
}

TEST_F(Bridge, PortsAreTakenAndGivenBack) {
  ASSERT_EQ(0, br_init());
  ASSERT_EQ(0, br_add_bridge("br0"));
  EXPECT_EQ(1, br_cmd_addif(nullptr, "br0", "eth0"));
  EXPECT_EQ("br0", bridgeOf("eth0"));
  EXPECT_EQ(-1, br_cmd_addif(nullptr, "br0", "eth0"));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_EQ(1, br_cmd_delif(nullptr, "br0", "eth0"));
  EXPECT_EQ("", bridgeOf("eth0"));
  EXPECT_EQ(-1, br_cmd_delif(nullptr, "br0", "eth0"));
  EXPECT_EQ(-1, br_cmd_addif(nullptr, "br0", "nosuch"));
  EXPECT_EQ(ENODEV, errno);
  EXPECT_EQ(-1, br_cmd_addif(nullptr, "nosuch", "eth0"));
}

TEST_F(Bridge, PortWithoutALookUpSocketIsFatal) {
  ASSERT_EQ(0, br_init());
  failCall("socket", 1, EMFILE);
  EXPECT_FATAL(br_cmd_addif(nullptr, "br0", "eth0"));
  EXPECT_FATAL(br_cmd_delif(nullptr, "br0", "eth0"));
  EXPECT_FATAL(br_find_bridge("br0"));
}

TEST_F(Bridge, UpTakesBothPortsWithoutSpanningTree) {
  EXPECT_EQ(0, set_bridge_up("br0", "eth0", "eth1"));
  EXPECT_THAT(kernelCalls(), ElementsAre("SIOCGIFBR 2", "SIOCGIFBR 1", "SIOCGIFNAME", "SIOCDEVPRIVATE br0 6",
                                         "SIOCGIFINDEX eth0", "SIOCDEVPRIVATE br0 4", "SIOCGIFINDEX eth1",
                                         "SIOCDEVPRIVATE br0 4", "SIOCDEVPRIVATE br0 14", "SIOCSIFFLAGS br0 0x1"));
  EXPECT_EQ("br0", bridgeOf("eth0"));
  EXPECT_EQ("br0", bridgeOf("eth1"));
  EXPECT_EQ("0\n", readFile("/sys/class/net/br0/bridge/stp_state"));
  EXPECT_EQ("0x3\n", readFile("/sys/class/net/br0/flags"));
  EXPECT_EQ(-1, br_socket_fd);
}

TEST_F(Bridge, UpUsesABridgeThatIsThere) {
  ASSERT_EQ(0, br_init());
  ASSERT_EQ(0, br_add_bridge("br0"));
  EXPECT_EQ(0, set_bridge_up("br0", "eth0", "eth1"));
  EXPECT_EQ("br0", bridgeOf("eth1"));
}

TEST_F(Bridge, HostsReachEachOtherThroughIt) {
  ASSERT_EQ(0, set_iface_up("eth0"));
  ASSERT_EQ(0, set_iface_up("eth1"));
  ASSERT_EQ(0, set_bridge_up("br0", "eth0", "eth1"));
  EXPECT_THAT(tried("/sbin/ip netns exec lan ping -c 1 -W 5 192.168.10.3"), HasSubstr(" 0% packet loss"));
  ASSERT_EQ(0, set_bridge_down("br0", "eth0", "eth1"));
  EXPECT_THAT(tried("/sbin/ip netns exec lan ping -c 1 -W 1 192.168.10.3"), HasSubstr("100% packet loss"));
}

TEST_F(Bridge, DownGivesThePortsBackAndRemovesIt) {
  ASSERT_EQ(0, set_bridge_up("br0", "eth0", "eth1"));
  watchKernel(Kernel::kReal);
  EXPECT_EQ(0, set_bridge_down("br0", "eth0", "eth1"));
  EXPECT_THAT(kernelCalls(),
              ElementsAre("SIOCGIFBR 1", "SIOCGIFNAME", "SIOCDEVPRIVATE br0 6", "SIOCGIFFLAGS br0",
                          AnyOf("SIOCSIFFLAGS br0 0x2", "SIOCSIFFLAGS br0 0x42"), "SIOCGIFINDEX eth0",
                          "SIOCDEVPRIVATE br0 5", "SIOCGIFINDEX eth1", "SIOCDEVPRIVATE br0 5", "SIOCGIFBR 3"));
  EXPECT_FALSE(bridgeExists("br0"));
  EXPECT_EQ("", bridgeOf("eth0"));
  EXPECT_EQ(-1, br_socket_fd);
}

TEST_F(Bridge, PortThatIsMissingOrTakenIsFatal) {
  ASSERT_EQ(0, br_init());
  ASSERT_EQ(0, br_add_bridge("other"));
  ASSERT_EQ(1, br_cmd_addif(nullptr, "other", "eth2"));
  for (const char* port : {"nosuch", "", "eth2", "lo", "abcdefghijklmnop"}) {
    EXPECT_FATAL(set_bridge_up("br0", port, "eth1"));
    EXPECT_FATAL(set_bridge_up("br0", "eth0", port));
    tried("/sbin/ip link set eth0 nomaster");
    EXPECT_FATAL(set_bridge_down("br0", port, "eth1"));
  }
}

TEST_F(Bridge, EachMissingSocketOfUpIsFatal) {
  for (int n = 1; n <= 4; ++n) {  // the bridge socket, then a look-up for the bridge and for each port
    failCall("socket", n, EMFILE);
    EXPECT_FATAL(set_bridge_up("br0", "eth0", "eth1"));
    tried("/sbin/ip link delete br0");
  }
}

TEST_F(Bridge, RefusedSpanningTreeGivesErrnoAndClosesTheSocket) {
  failCall("ioctl", 9, EPERM);
  EXPECT_EQ(EPERM, set_bridge_up("br0", "eth0", "eth1"));
  EXPECT_EQ(-1, br_socket_fd);
}

TEST_F(Bridge, RefusedFlagsFailAndCloseTheSocket) {
  failCall("ioctl", 10, EPERM);
  EXPECT_EQ(-1, set_bridge_up("br0", "eth0", "eth1"));
  EXPECT_EQ(-1, br_socket_fd);
}

TEST_F(Bridge, DownGoesOnWhenTheFlagsCannotBeChanged) {
  ASSERT_EQ(0, set_bridge_up("br0", "eth0", "eth1"));
  failCall("socket", 3, EMFILE);  // behind the bridge socket and the look-up
  EXPECT_EQ(0, set_bridge_down("br0", "eth0", "eth1"));
  EXPECT_TRUE(bridgeExists("br0")) << "a bridge that is up cannot be removed";
  EXPECT_EQ("", bridgeOf("eth1"));
}

TEST_F(Bridge, DownOfABridgeThatIsNotThereIsFatal) { EXPECT_FATAL(set_bridge_down("br0", "eth0", "eth1")); }

}  // namespace
}  // namespace kestrove::testing
