// SPDX-License-Identifier: Apache-2.0
// Uptime and interface counters: the kernel's own files and files in their place.
#include <sys/mount.h>
#include <sys/stat.h>
#include <time.h>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

// Puts plain files in the place of the kernel's until the end of the test.
class FakeProc : public ::testing::Test {
 protected:
  void TearDown() override {
    while (mounts_-- > 0) umount2("/proc", MNT_DETACH);
  }
  void emptyProc() {
    ASSERT_EQ(0, mount("tmpfs", "/proc", "tmpfs", 0, nullptr));
    ++mounts_;
  }
  void uptimeReads(const std::string& text) {
    emptyProc();
    writeFile("/proc/uptime", text);
  }
  void interfacesRead(const std::string& lines);

 private:
  int mounts_ = 0;
};

class Uptime : public FakeProc {};
class Interfaces : public FakeProc {};

constexpr char kHeadings[] =
    "Inter-|   Receive                                                |  Transmit\n"
    " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop fifo colls carrier "
    "compressed\n";

void FakeProc::interfacesRead(const std::string& lines) {
  emptyProc();
  ASSERT_EQ(0, mkdir("/proc/net", 0755));
  writeFile("/proc/net/dev", kHeadings + lines);
}

struct Counters {
  uint64_t value[6];
};

Counters counters(const char* name) {
  Counters out;
  EXPECT_EQ(0, readInterfaceStats(&out, name)) << name;
  return out;
}

void expectCounters(const char* name, const std::vector<uint64_t>& expected) {
  Counters out = counters(name);
  EXPECT_EQ(expected, std::vector<uint64_t>(out.value, out.value + 6));
}

void expectNoCounters(const char* name, int code) {
  Counters out = {{1, 2, 3, 4, 5, 6}};
  EXPECT_FAILS_WITH(code, readInterfaceStats(&out, name));
  EXPECT_EQ(1u, out.value[0]);
  EXPECT_EQ(6u, out.value[5]);
}

TEST_F(Uptime, IsTheKernels) {
  timespec now;
  clock_gettime(CLOCK_BOOTTIME, &now);
  uint32_t uptime = 0;
  EXPECT_EQ(0, getSystemUptime(&uptime));
  EXPECT_NEAR(static_cast<double>(now.tv_sec) * 100, uptime, 300);
}

TEST_F(Uptime, IsHundredthsCutToAWholeNumber) {
  uint32_t uptime;
  uptimeReads("123.45 99.00\n");
  EXPECT_EQ(0, getSystemUptime(&uptime));
  EXPECT_EQ(12345u, uptime);
  uptimeReads("1.999");
  EXPECT_EQ(0, getSystemUptime(&uptime));
  EXPECT_EQ(199u, uptime);
  uptimeReads("0 0");
  EXPECT_EQ(0, getSystemUptime(&uptime));
  EXPECT_EQ(0u, uptime);
}

TEST_F(Uptime, IsTheSameInBothWidths) {
  uint32_t uptime;
  for (auto [text, expected] :
       {std::pair{"0.29", 28u}, {"19.95", 1995u}, {"49.86", 4986u}, {"1234567.89", 123456788u}}) {
    uptimeReads(text);
    EXPECT_EQ(0, getSystemUptime(&uptime));
    EXPECT_EQ(expected, uptime) << text;
  }
}

TEST_F(Uptime, KeepsTheLow32Bits) {
  uint32_t uptime;
  uptimeReads("42949673.00");
  EXPECT_EQ(0, getSystemUptime(&uptime));
  EXPECT_EQ(4u, uptime);
}

TEST_F(Uptime, RubbishGivesZeroAndSetsNoCode) {
  shm_errno = 42;
  for (const char* text : {"-1.00", "-0.001", "nan", "inf", "1e300", "up since Monday", ""}) {
    uptimeReads(text);
    uint32_t uptime = 7;
    EXPECT_EQ(-1, getSystemUptime(&uptime)) << text;
    EXPECT_EQ(0u, uptime) << text;
  }
  EXPECT_EQ(42u, shm_errno);
}

TEST_F(Uptime, UnreadableGivesZero) {
  emptyProc();
  uint32_t uptime = 7;
  EXPECT_EQ(-1, getSystemUptime(&uptime));
  EXPECT_EQ(0u, uptime);
}

TEST_F(Uptime, NeedsAnOutput) { EXPECT_FAILS_WITH(SHM_EINVAL, getSystemUptime(nullptr)); }

TEST_F(Interfaces, OfTheKernelAreRead) {
  Counters out = counters("lo");
  EXPECT_EQ(out.value[0], out.value[1]) << "what the loopback sends it receives";
}

TEST_F(Interfaces, ColumnsGoToTheirFields) {
  interfacesRead("  eth0: 11 12 13 14 15 16 17 18 21 22 23 24 25 26 27 28\n");
  expectCounters("eth0", {21, 11, 22, 12, 24, 14});
}

TEST_F(Interfaces, TheEnginesOwnIsTurnedAround) {
  interfacesRead("  tap0: 11 12 13 14 15 16 17 18 21 22 23 24 25 26 27 28\n tap00: 1 2 3 4 5 6 7 8 9 10 11 12 13 14\n");
  expectCounters("tap0", {11, 21, 12, 22, 14, 24});
  expectCounters("tap00", {9, 1, 10, 2, 12, 4});
}

TEST_F(Interfaces, NamesMatchExactly) {
  interfacesRead(
      " eth01: 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1\n"
      "  eth0:9 9 9 9 9 9 9 9 9 9 9 9 9 9 9 9\n"
      "   eth: 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2 2\n");
  expectCounters("eth0", {9, 9, 9, 9, 9, 9});
  expectCounters("eth", {2, 2, 2, 2, 2, 2});
  expectCounters("eth01", {1, 1, 1, 1, 1, 1});
  for (const char* name : {"eth02", "et", "ETH0", " eth0", "eth0:", "", "Inter-|", "face"}) {
    expectNoCounters(name, SHM_ENOENT);
  }
}

TEST_F(Interfaces, CountersAre64Bits) {
  interfacesRead("eth0: 18446744073709551615 4294967296 0 4294967295 0 0 0 0 18446744073709551614 0 0 1\n");
  expectCounters("eth0", {UINT64_MAX - 1, UINT64_MAX, 0, uint64_t{1} << 32, 1, UINT32_MAX});
}

TEST_F(Interfaces, ALineThatIsTooShortIsNotUsed) {
  interfacesRead("eth0: 1 2 3 4 5 6 7 8 9 10 11\neth1: 1 2 three 4\n");
  expectNoCounters("eth0", SHM_EIO);
  expectNoCounters("eth1", SHM_EIO);
}

TEST_F(Interfaces, WithoutTheKernelsList) {
  emptyProc();
  expectNoCounters("lo", SHM_EOPEN);
}

TEST_F(Interfaces, NeedNameAndOutput) {
  Counters out;
  EXPECT_FAILS_WITH(SHM_EINVAL, readInterfaceStats(nullptr, "lo"));
  EXPECT_FAILS_WITH(SHM_EINVAL, readInterfaceStats(&out, nullptr));
}

TEST_F(Interfaces, AnEmptyOrEndlessListNamesNobody) {
  interfacesRead("");
  expectNoCounters("eth0", SHM_ENOENT);
  interfacesRead(std::string(100000, 'x'));
  expectNoCounters("eth0", SHM_ENOENT);
}

}  // namespace
}  // namespace kestrove::testing
