// SPDX-License-Identifier: Apache-2.0
// Routes in the real kernel.
#include <arpa/inet.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "tests/net/routes/routes_fixture.h"
#include "tests/support/kernel.h"
#include "tests/support/records.h"
#include "tests/support/save_counter.h"

namespace kestrove::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// The lowest descriptor that is free: the same before and after means that none is left open.
int lowestDescriptor() {
  int fd = dup(0);
  close(fd);
  return fd;
}

// From now on no descriptor can be opened, until the end of the scope.
class NoDescriptors {
 public:
  NoDescriptors() {
    getrlimit(RLIMIT_NOFILE, &before_);
    rlimit none = {static_cast<rlim_t>(lowestDescriptor()), before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_;
};

// eth0 is 192.168.5.1/24 and 2001:db8:5::1/64, and the store knows it.
class KernelRoutes : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    run("ip link set eth0 up");
    run("ip addr add 192.168.5.1/24 dev eth0");
    run("ip -6 addr add 2001:db8:5::1/64 dev eth0 nodad");
    strcpy(shm->config.wanInterfaceName, "eth0");
    shm->managementAddress[0] = managementRecord("192.168.5.1", SHM_IF_WAN);
    shm->managementAddress[1] = management6Record("2001:db8:5::1", SHM_IF_WAN);
    shm->managementAddressCount = 2;
    descriptor_ = lowestDescriptor();
  }
  void TearDown() override {
    EXPECT_EQ(descriptor_, lowestDescriptor());
    EXPECT_EQ(0, shm_lock_count);
    StoreTest::TearDown();
  }

  int descriptor_;
};

class KernelRoutes4 : public KernelRoutes {
 protected:
  static RouteEntry route(const char* net, const char* mask = "255.255.0.0", uint32_t status = kActive,
                          const char* gateway = "192.168.5.254") {
    return routeRecord(net, mask, gateway, status);
  }
  static int add(const char* net, const char* mask = "255.255.0.0", uint32_t status = kActive,
                 const char* gateway = "192.168.5.254") {
    RouteEntry entry = route(net, mask, status, gateway);
    return addUserRoute(&entry);
  }
  static uint32_t status(const char* net, const char* mask = "255.255.0.0") {
    RouteEntry out = {};
    EXPECT_EQ(0, getRouteTableEntry(quad(net), quad(mask), &out));
    return out.status;
  }
  // Destination, gateway, flags and mask, in the kernel's own words, of the routes with a gateway.
  static std::vector<std::string> kernel() {
    std::istringstream lines(readFile("/proc/net/route"));
    std::vector<std::string> routes;
    std::string line, name, destination, gateway, flags, use, metric, mask;
    for (std::getline(lines, line); std::getline(lines, line);) {
      std::istringstream(line) >> name >> destination >> gateway >> flags >> use >> use >> metric >> mask;
      if (gateway != "00000000")
        routes.push_back(destination + " " + gateway + " " + flags + " " + mask + " " + metric);
    }
    return routes;
  }
};

TEST_F(KernelRoutes4, ARouteWithALocalGatewayIsInstalled) {
  EXPECT_EQ(0, add("10.1.0.0"));
  EXPECT_EQ(kActive, status("10.1.0.0"));
  EXPECT_THAT(kernel(), ElementsAre("0000010A FE05A8C0 0003 0000FFFF 0"));
  EXPECT_EQ("10.1.0.0/16 via 192.168.5.254 dev eth0 \n", outputOf("ip route show 10.1.0.0/16"));
}

TEST_F(KernelRoutes4, OnlyAHostRouteCarriesTheHostFlag) {
  EXPECT_EQ(0, add("10.1.2.3", "255.255.255.255"));
  EXPECT_EQ(0, add("10.1.2.4", "255.255.255.254"));
  EXPECT_EQ(0, add("0.0.0.0", "0.0.0.0"));
  EXPECT_THAT(kernel(),
              ::testing::UnorderedElementsAre("0302010A FE05A8C0 0007 FFFFFFFF 0", "0402010A FE05A8C0 0003 FEFFFFFF 0",
                                              "00000000 FE05A8C0 0003 00000000 0"));
}

TEST_F(KernelRoutes4, ARouteWhoseGatewayIsElsewhereIsKeptAsInactive) {
  shm_errno = 99;
  EXPECT_EQ(0, add("10.1.0.0", "255.255.0.0", kActive, "172.16.0.1"));
  EXPECT_EQ(99u, shm_errno);
  EXPECT_EQ(kInactive, status("10.1.0.0"));
  EXPECT_THAT(kernel(), IsEmpty());
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("172.16.0.1         1 "));
}

TEST_F(KernelRoutes4, ARouteThatTheKernelRefusesIsKeptAsInactive) {
  EXPECT_EQ(0, add("10.1.0.7")) << "an address outside its mask";
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
  EXPECT_EQ(kInactive, status("10.1.0.7"));
  EXPECT_THAT(kernel(), IsEmpty());
}

TEST_F(KernelRoutes4, OtherStatusesAndModesLeaveTheKernelAlone) {
  add("10.1.0.0", "255.255.0.0", kDisabled);
  add("10.2.0.0", "255.255.0.0", kInactive);
  shm->operationalState = SHM_STATE_DEBUG;
  add("10.3.0.0");
  shm->operationalState = SHM_STATE_CONFIGURATION;
  add("10.4.0.0");
  EXPECT_EQ(kActive, status("10.3.0.0"));
  EXPECT_EQ(kActive, status("10.4.0.0"));
  EXPECT_THAT(kernel(), IsEmpty());
}

TEST_F(KernelRoutes4, StatesOtherThanFourAndFiveInstall) {
  int net = 1;
  for (uint32_t state : {0u, 1u, 2u, 3u, 6u}) {
    shm->operationalState = state;
    add(("10." + std::to_string(net++) + ".0.0").c_str());
  }
  EXPECT_EQ(5u, kernel().size());
}

TEST_F(KernelRoutes4, DeletingTakesTheRouteOutOfTheKernel) {
  add("10.1.0.0");
  add("10.2.0.0");
  EXPECT_EQ(0, deleteUserRoute(quad("10.1.0.0"), quad("255.255.0.0")));
  EXPECT_THAT(kernel(), ElementsAre("0000020A FE05A8C0 0003 0000FFFF 0"));
  EXPECT_THAT(readFile(kConfigFile), ::testing::Not(HasSubstr("10.1.0.0")));
}

TEST_F(KernelRoutes4, DebugModeDeletesFromTheTableAlone) {
  add("10.1.0.0");
  shm->operationalState = SHM_STATE_DEBUG;
  EXPECT_EQ(0, deleteUserRoute(quad("10.1.0.0"), quad("255.255.0.0")));
  EXPECT_EQ(1u, kernel().size());
}

TEST_F(KernelRoutes4, ARouteThatTheKernelLostCannotBeDeletedAtOnce) {
  add("10.1.0.0");
  run("ip route del 10.1.0.0/16");
  EXPECT_FAILS_WITH(SHM_ESYSTEM, deleteUserRoute(quad("10.1.0.0"), quad("255.255.0.0")));
  EXPECT_EQ(kInactive, status("10.1.0.0"));
  EXPECT_THAT(readFile(kConfigFile), HasSubstr("192.168.5.254      3 ")) << "not saved";
}

TEST_F(KernelRoutes4, ReplacingMovesTheRouteInTheKernel) {
  add("10.1.0.0");
  RouteEntry other = route("10.2.0.0");
  EXPECT_EQ(0, replaceUserRoute(quad("10.1.0.0"), quad("255.255.0.0"), &other, 0, "--"));
  EXPECT_THAT(kernel(), ElementsAre("0000020A FE05A8C0 0003 0000FFFF 0"));
}

TEST_F(KernelRoutes4, ReplacingByAKnownKeyTakesTheOldRouteOut) {
  add("10.1.0.0");
  add("10.2.0.0");
  RouteEntry other = route("10.2.0.0");
  EXPECT_FAILS_WITH(SHM_EEXIST, replaceUserRoute(quad("10.1.0.0"), quad("255.255.0.0"), &other, 0, "--"));
  EXPECT_THAT(kernel(), ElementsAre("0000020A FE05A8C0 0003 0000FFFF 0"));
}

TEST_F(KernelRoutes4, AddingAllInstallsWhatCanBeAndSavesNothing) {
  shm->operationalState = SHM_STATE_DEBUG;
  add("10.1.0.0", "255.255.0.0", kInactive);
  add("10.2.0.0", "255.255.0.0", kDisabled);
  add("10.3.0.0", "255.255.0.0", kActive);
  add("10.4.0.0", "255.255.0.0", kActive, "172.16.0.1");
  add("10.5.0.9", "255.255.0.0", kActive);
  shm->operationalState = SHM_STATE_OPERATIONAL;
  SaveCounter saves;
  EXPECT_EQ(0, addAllRoutes());
  EXPECT_EQ(uint32_t{SHM_ENOENT}, shm_errno);
  EXPECT_EQ(0, saves.count());
  EXPECT_EQ(kActive, status("10.1.0.0"));
  EXPECT_EQ(kDisabled, status("10.2.0.0"));
  EXPECT_EQ(kActive, status("10.3.0.0"));
  EXPECT_EQ(kInactive, status("10.4.0.0"));
  EXPECT_EQ(kInactive, status("10.5.0.9"));
  EXPECT_THAT(kernel(), ::testing::UnorderedElementsAre("0000010A FE05A8C0 0003 0000FFFF 0",
                                                        "0000030A FE05A8C0 0003 0000FFFF 0"));
  EXPECT_EQ(0, addAllRoutes()) << "installed routes are put in anew";
  EXPECT_EQ(kActive, status("10.1.0.0"));
  EXPECT_EQ(2u, kernel().size());
}

TEST_F(KernelRoutes4, AddingAllBringsRoutesBackAfterTheInterfaceWasDown) {
  add("10.1.0.0");
  run("ip link set eth0 down");
  EXPECT_THAT(kernel(), IsEmpty());
  EXPECT_EQ(0, addAllRoutes());
  EXPECT_EQ(kInactive, status("10.1.0.0"));
  run("ip link set eth0 up");
  EXPECT_EQ(0, addAllRoutes());
  EXPECT_EQ(kActive, status("10.1.0.0"));
}

TEST_F(KernelRoutes4, FresheningInstallsDisabledRoutesToo) {
  add("10.1.0.0", "255.255.0.0", kDisabled);
  add("10.2.0.0", "255.255.0.0", kActive);
  add("10.3.0.0", "255.255.0.0", kActive, "172.16.0.1");
  addAllRoutes();
  EXPECT_EQ(kDisabled, status("10.1.0.0"));
  SaveCounter saves;
  EXPECT_EQ(0, freshenRouteTable(0, "--"));
  EXPECT_EQ(uint32_t{SHM_ENOENT}, shm_errno);
  EXPECT_EQ(1, saves.count());
  EXPECT_EQ(kActive, status("10.1.0.0"));
  EXPECT_EQ(kActive, status("10.2.0.0"));
  EXPECT_EQ(kInactive, status("10.3.0.0"));
  EXPECT_EQ(2u, kernel().size());
}

TEST_F(KernelRoutes4, FresheningMarksWhatTheKernelLost) {
  add("10.1.0.0");
  add("10.2.0.0");
  run("ip route flush via 192.168.5.254");
  SaveCounter saves;
  EXPECT_EQ(0, freshenRouteTable(0, "--"));
  EXPECT_EQ(0, saves.count()) << "no route could be replaced";
  EXPECT_EQ(kInactive, status("10.1.0.0"));
  EXPECT_EQ(0, freshenRouteTable(0, "--"));
  EXPECT_EQ(kActive, status("10.1.0.0"));
  EXPECT_EQ(kActive, status("10.2.0.0"));
  EXPECT_EQ(2u, kernel().size());
}

TEST_F(KernelRoutes4, AThousandRoutesFreshenWithOneSave) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  for (int i = 0; i < SHM_ROUTES; ++i) {
    add(("10." + std::to_string(i / 256) + "." + std::to_string(i % 256) + ".0").c_str(), "255.255.255.0");
  }
  shm->operationalState = SHM_STATE_OPERATIONAL;
  addAllRoutes();
  ASSERT_EQ(size_t{SHM_ROUTES}, kernel().size());
  SaveCounter saves;
  EXPECT_EQ(0, freshenRouteTable(0, "--"));
  EXPECT_EQ(1, saves.count());
  EXPECT_EQ(size_t{SHM_ROUTES}, kernel().size());
}

TEST_F(KernelRoutes4, TheRequestsGiveTheKernelsWord) {
  RouteEntry entry = route("10.1.0.0");
  EXPECT_EQ(0, addKernelRoute(&entry));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, addKernelRoute(&entry));
  EXPECT_EQ(EEXIST, errno);
  EXPECT_EQ(0, deleteKernelRoute(&entry));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, deleteKernelRoute(&entry));
  EXPECT_EQ(ESRCH, errno);
}

TEST_F(KernelRoutes4, WithoutASocketTheRouteIsKeptAsInactive) {
  shm->operationalState = SHM_STATE_DEBUG;  // a save opens files before the limit falls
  add("10.1.0.0");
  shm->operationalState = SHM_STATE_OPERATIONAL;
  RouteEntry entry = route("10.2.0.0");
  NoDescriptors none;
  EXPECT_FAILS_WITH(SHM_ESYSTEM, addKernelRoute(&entry));
  EXPECT_EQ(EMFILE, errno);
  EXPECT_FAILS_WITH(SHM_ESYSTEM, deleteKernelRoute(&entry));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, deleteUserRoute(quad("10.1.0.0"), quad("255.255.0.0")));
  EXPECT_EQ(kInactive, status("10.1.0.0"));
  EXPECT_EQ(0, addUserRoute(&entry));
  EXPECT_EQ(kInactive, status("10.2.0.0"));
}

TEST_F(KernelRoutes4, WithoutPrivilegeTheKernelRefuses) {
  pid_t child = fork();
  if (child == 0) {
    RouteEntry entry = route("10.1.0.0");
    bool refused = setuid(65534) == 0 && addKernelRoute(&entry) == -1 && shm_errno == SHM_ESYSTEM && errno == EPERM;
    _exit(refused ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
  EXPECT_THAT(kernel(), IsEmpty());
}

class KernelRoutes6 : public KernelRoutes {
 protected:
  static Route6Entry route(const char* net, uint32_t prefix = 64, uint32_t status = kActive,
                           const char* gateway = "2001:db8:5::fe") {
    return route6Record(net, prefix, gateway, status);
  }
  static int add(const char* net, uint32_t prefix = 64, uint32_t status = kActive,
                 const char* gateway = "2001:db8:5::fe") {
    Route6Entry entry = route(net, prefix, status, gateway);
    return addUserRoute6(&entry);
  }
  static int remove(const char* net, uint32_t prefix = 64) {
    Route6Entry entry = route(net, prefix);
    return deleteUserRoute6(entry.destination, prefix);
  }
  static Route6Entry get(const char* net, uint32_t prefix = 64) {
    Route6Entry entry = route(net, prefix);
    Route6Entry out = {};
    EXPECT_EQ(0, getRoute6TableEntry(entry.destination, prefix, &out));
    return out;
  }
  // Destination, prefix, flags and interface of the routes below 2001:db8:1::/48 to 2001:db8:4::/48.
  static std::vector<std::string> kernel() {
    std::istringstream lines(readFile("/proc/net/ipv6_route"));
    std::vector<std::string> routes;
    std::string line, destination, prefix, source, sourcePrefix, gateway, metric, count, use, flags, name;
    while (std::getline(lines, line)) {
      std::istringstream(line) >> destination >> prefix >> source >> sourcePrefix >> gateway >> metric >> count >>
          use >> flags >> name;
      if (destination.substr(0, 11) == "20010db8000" && destination[11] < '5') {
        routes.push_back(destination.substr(8) + " " + prefix + " " + flags + " " + name);
      }
    }
    return routes;
  }
};

TEST_F(KernelRoutes6, ARouteWithALocalGatewayIsInstalledOnTheGatewaysInterface) {
  Route6Entry entry = route("2001:db8:1::");
  EXPECT_EQ(0, addUserRoute6(&entry));
  EXPECT_STREQ("eth0", entry.interfaceName) << "the caller learns the interface";
  EXPECT_STREQ("", get("2001:db8:1::").interfaceName) << "the table keeps what it was given";
  EXPECT_EQ(kActive, get("2001:db8:1::").status);
  EXPECT_THAT(kernel(), ElementsAre("000100000000000000000000 40 00000001 eth0"));
}

TEST_F(KernelRoutes6, OnlyAHostRouteCarriesTheHostFlag) {
  EXPECT_EQ(0, add("2001:db8:1::7", 128));
  EXPECT_EQ(0, add("2001:db8:2::6", 127));
  EXPECT_THAT(kernel(), ::testing::UnorderedElementsAre("000100000000000000000007 80 00000005 eth0",
                                                        "000200000000000000000006 7f 00000001 eth0"));
}

TEST_F(KernelRoutes6, ARouteWhoseGatewayIsElsewhereIsKeptAsInactive) {
  EXPECT_EQ(0, add("2001:db8:1::", 64, kActive, "2001:db8:6::1"));
  EXPECT_EQ(kInactive, get("2001:db8:1::").status);
  EXPECT_THAT(kernel(), IsEmpty());
}

TEST_F(KernelRoutes6, ARouteThatTheKernelRefusesIsKeptAsInactive) {
  EXPECT_EQ(0, add("2001:db8:1::", 129));
  EXPECT_EQ(kInactive, get("2001:db8:1::", 129).status);
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
}

TEST_F(KernelRoutes6, AnInterfaceThatIsNotThereKeepsTheRouteInactive) {
  strcpy(shm->config.wanInterfaceName, "nothere");
  EXPECT_EQ(0, add("2001:db8:1::"));
  EXPECT_EQ(kInactive, get("2001:db8:1::").status);
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
}

TEST_F(KernelRoutes6, OtherStatusesAndModesLeaveTheKernelAndTheCallerAlone) {
  Route6Entry entry = route("2001:db8:1::", 64, kDisabled);
  EXPECT_EQ(0, addUserRoute6(&entry));
  EXPECT_STREQ("", entry.interfaceName);
  shm->operationalState = SHM_STATE_DEBUG;
  add("2001:db8:2::");
  shm->operationalState = SHM_STATE_CONFIGURATION;
  entry = route("2001:db8:3::");
  EXPECT_EQ(0, addUserRoute6(&entry));
  EXPECT_STREQ("", entry.interfaceName);
  EXPECT_THAT(kernel(), IsEmpty());
}

TEST_F(KernelRoutes6, DeletingTakesTheRouteOffWhateverInterfaceItIsOn) {
  add("2001:db8:1::");
  EXPECT_EQ(0, remove("2001:db8:1::"));
  EXPECT_THAT(kernel(), IsEmpty());
}

TEST_F(KernelRoutes6, DeletingAStoredRouteWithANameAsksForThatInterface) {
  Route6Entry entry = route("2001:db8:1::");
  strcpy(entry.interfaceName, "eth1");
  EXPECT_EQ(0, addUserRoute6(&entry));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, remove("2001:db8:1::"));
  EXPECT_EQ(kInactive, get("2001:db8:1::").status);
  EXPECT_EQ(1u, kernel().size());
}

TEST_F(KernelRoutes6, ReplacingMovesTheRouteInTheKernel) {
  add("2001:db8:1::");
  Route6Entry old = route("2001:db8:1::");
  Route6Entry other = route("2001:db8:2::");
  EXPECT_EQ(0, replaceUserRoute6(old.destination, 64, &other, 0, "--"));
  EXPECT_STREQ("eth0", other.interfaceName);
  EXPECT_THAT(kernel(), ElementsAre("000200000000000000000000 40 00000001 eth0"));
}

TEST_F(KernelRoutes6, FresheningInstallsDisabledRoutesTooWithOneSave) {
  add("2001:db8:1::", 64, kDisabled);
  add("2001:db8:2::");
  add("2001:db8:3::", 64, kActive, "2001:db8:6::1");
  SaveCounter saves;
  EXPECT_EQ(0, freshenRoute6Table(0, "--"));
  EXPECT_EQ(1, saves.count());
  EXPECT_EQ(kActive, get("2001:db8:1::").status);
  EXPECT_EQ(kActive, get("2001:db8:2::").status);
  EXPECT_EQ(kInactive, get("2001:db8:3::").status);
  EXPECT_STREQ("", get("2001:db8:1::").interfaceName);
  EXPECT_EQ(2u, kernel().size());
}

TEST_F(KernelRoutes6, TheRequestsGiveTheKernelsWord) {
  Route6Entry entry = route("2001:db8:1::");
  EXPECT_FAILS_WITH(SHM_ESYSTEM, addKernelRoute6(&entry));  // no interface, no route
  strcpy(entry.interfaceName, "eth0");
  EXPECT_EQ(0, addKernelRoute6(&entry));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, addKernelRoute6(&entry));
  EXPECT_EQ(EEXIST, errno);
  strcpy(entry.interfaceName, "nothere");
  EXPECT_FAILS_WITH(SHM_ESYSTEM, deleteKernelRoute6(&entry));
  EXPECT_EQ(ENODEV, errno);
  entry.interfaceName[0] = '\0';
  EXPECT_EQ(0, deleteKernelRoute6(&entry));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, deleteKernelRoute6(&entry));
  EXPECT_EQ(ESRCH, errno);
}

TEST_F(KernelRoutes6, WhereIpv6IsOffTheRouteIsKeptAsInactive) {
  run("echo 1 > /proc/sys/net/ipv6/conf/eth0/disable_ipv6");
  EXPECT_EQ(0, add("2001:db8:1::"));
  EXPECT_EQ(kInactive, get("2001:db8:1::").status);
  EXPECT_EQ(uint32_t{SHM_ESYSTEM}, shm_errno);
}

TEST_F(KernelRoutes6, WithoutASocketTheRouteIsKeptAsInactive) {
  Route6Entry entry = route("2001:db8:2::");
  NoDescriptors none;
  EXPECT_FAILS_WITH(SHM_ESYSTEM, deleteKernelRoute6(&entry));
  EXPECT_EQ(EMFILE, errno);
  EXPECT_EQ(0, addUserRoute6(&entry));
  EXPECT_EQ(kInactive, get("2001:db8:2::").status);
}

}  // namespace
}  // namespace kestrove::testing
