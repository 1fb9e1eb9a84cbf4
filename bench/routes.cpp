// SPDX-License-Identifier: Apache-2.0
// Route tables and kernel routes, each beside its floor.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <net/route.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <random>

#include "bench/floors.h"
#include "bench/full_tables.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"

namespace {

using bench::byProcessor;
using bench::lockPair;

constexpr uint32_t kRoutes = SHM_ROUTES;
enum { kInFileOrder, kRandom };
constexpr int kAdditions = 256;

// All of them, made once: making them is not what is measured.
template <typename Record>
std::array<Record, kRoutes> all(Record (*route)(uint32_t n)) {
  std::array<Record, kRoutes> routes;
  for (uint32_t n = 0; n < kRoutes; ++n) routes[n] = route(n);
  return routes;
}

struct Table4 {
  static void empty() {
    for (RouteEntry& slot : shm->routes.slot) slot.inUse = slot.next = SHM_NO_SLOT;
    shm->routes.head = 0;
  }
  static bool add(uint32_t n) {
    static const auto routes = all(bench::routeAt);
    return addUserRoute(&routes[n]) == 0;
  }
  static uint32_t walk() {
    RouteEntry route;
    uint32_t count = 0;
    for (int result = getFirstRouteTableEntry(&route); result == 0; ++count) {
      result = getNextRouteTableEntry(route.destination, route.netmask, &route);
    }
    return count;
  }
  static uint32_t links() {
    uint32_t count = 0;
    for (uint32_t slot = shm->routes.head; slot < kRoutes; slot = shm->routes.slot[slot].next) ++count;
    return count;
  }
};

struct Table6 {
  static void empty() {
    for (Route6Entry& slot : shm->routes6.slot) slot.inUse = slot.next = SHM_NO_SLOT;
    shm->routes6.head6 = 0;
  }
  static bool add(uint32_t n) {
    static auto routes = all(bench::route6At);
    return addUserRoute6(&routes[n]) == 0;
  }
  static uint32_t walk() {
    Route6Entry route;
    uint32_t count = 0;
    for (int result = getFirstRoute6TableEntry(&route); result == 0; ++count) {
      result = getNextRoute6TableEntry(route.destination, route.prefixLength, &route);
    }
    return count;
  }
  static uint32_t links() {
    uint32_t count = 0;
    for (uint32_t slot = shm->routes6.head6; slot < kRoutes; slot = shm->routes6.slot[slot].next) ++count;
    return count;
  }
};

using Order = std::array<uint32_t, kRoutes>;

Order fileOrder() {
  Order order;
  std::iota(order.begin(), order.end(), 0);
  return order;
}

Order randomOrder() {
  Order order = fileOrder();
  std::shuffle(order.begin(), order.end(), std::minstd_rand());
  return order;
}

template <typename Table>
void fill(const Order& order) {
  shm->operationalState = SHM_STATE_CONFIGURATION;
  Table::empty();
  for (uint32_t n : order) {
    if (!Table::add(n)) exit(2);
  }
  shm->operationalState = SHM_STATE_OPERATIONAL;
}

void lockPairs() {
  for (uint32_t n = 0; n < kRoutes; ++n) lockPair();
}

// Emptying the table is part of it: stopping the clock costs more.
template <typename Table>
void routeFill(benchmark::State& state) {
  Order order = state.range(0) == kRandom ? randomOrder() : fileOrder();
  bench::inTurns(state, byProcessor([&order] { fill<Table>(order); }), byProcessor(lockPairs));
  Table::empty();
}
BENCH_ROW(routeFill<Table4>)->Name("routeFill4")->Arg(kInFileOrder)->Arg(kRandom);
BENCH_ROW(routeFill<Table6>)->Name("routeFill6")->Arg(kInFileOrder)->Arg(kRandom);

template <typename Table>
void routeWalk(benchmark::State& state) {
  fill<Table>(fileOrder());
  auto work = [&state] {
    if (Table::walk() != kRoutes) state.SkipWithError("the walk is not whole");
  };
  auto floor = [] {
    lockPairs();
    benchmark::DoNotOptimize(Table::links());
  };
  bench::inTurns(state, byProcessor(work), byProcessor(floor));
  Table::empty();
}
BENCH_ROW(routeWalk<Table4>)->Name("routeWalk4");
BENCH_ROW(routeWalk<Table6>)->Name("routeWalk6");

void setAddress(sockaddr& out, uint32_t address) {
  sockaddr_in in = {};
  in.sin_family = AF_INET;
  in.sin_addr.s_addr = address;
  memcpy(&out, &in, sizeof out);
}

bool bareRequest(const RouteEntry& route, unsigned long command) {
  int raw = socket(AF_INET, SOCK_RAW, IPPROTO_RAW);
  rtentry entry = {};
  setAddress(entry.rt_dst, route.destination);
  setAddress(entry.rt_gateway, route.gateway);
  setAddress(entry.rt_genmask, route.netmask);
  entry.rt_flags = RTF_UP | RTF_GATEWAY;
  int result = ioctl(raw, command, &entry);
  close(raw);
  return result == 0;
}

void clearKernel() {
  if (system("ip route flush via 192.168.5.254 2> /dev/null") != 0) exit(2);
}

// The gateway's subnet is on eth0, in kernel and store, for a scope; the rule table is full, so that a save costs what
// it can.
class Connected {
 public:
  Connected() : rules_(shm->filterTable.ruleCount) {
    if (system("ip link set eth0 up && (ip addr add 192.168.5.1/24 dev eth0 2> /dev/null || true)") != 0) exit(2);
    clearKernel();
    Table4::empty();
    Table6::empty();
    shm->managementAddress[0] = {4, 1, inet_addr("192.168.5.1"), inet_addr("255.255.255.0"), {}, 0, 1};
    shm->managementAddressCount = 1;
    shm->filterTable.ruleCount = SHM_RULES;
  }
  ~Connected() {
    shm->filterTable.ruleCount = rules_;
    shm->managementAddressCount = 0;
    Table4::empty();
    clearKernel();
  }
  Connected(const Connected&) = delete;
  Connected& operator=(const Connected&) = delete;

 private:
  int32_t rules_;
};

void requireActive(benchmark::State& state, uint32_t count) {
  for (uint32_t n = 0; n < count; ++n) {
    if (shm->routes.slot[n].status != SHM_ROUTE_ACTIVE) state.SkipWithError("a route is not in the kernel");
  }
}

// A net beside those of the table, for the floor's requests.
RouteEntry otherRoute(uint32_t n) {
  RouteEntry route = bench::routeAt(n);
  route.destination ^= 1;
  return route;
}

void routeAdd(benchmark::State& state) {
  Connected connected;
  uint32_t added = 0, others = 0;
  auto work = [&added] { Table4::add(added++); };
  auto floor = [&state, &others] {
    if (!bareRequest(otherRoute(others++), SIOCADDRT) || save_shared_memory() != 0) state.SkipWithError("refused");
  };
  bench::inTurns(state, byProcessor(work), byProcessor(floor), kAdditions);
  requireActive(state, added);
}
BENCH_ROW(routeAdd);

// A full table, all in the kernel, with as many others beside them.
void fillKernel() {
  fill<Table4>(fileOrder());
  addAllRoutes();
  for (uint32_t n = 0; n < kRoutes; ++n) bareRequest(otherRoute(n), SIOCADDRT);
}

void bareRoundTrip(benchmark::State& state) {
  for (uint32_t n = 0; n < kRoutes; ++n) {
    RouteEntry route = otherRoute(n);
    if (!bareRequest(route, SIOCDELRT) || !bareRequest(route, SIOCADDRT)) state.SkipWithError("refused");
  }
}

void routeInstall(benchmark::State& state) {
  Connected connected;
  fillKernel();
  bench::inTurns(state, byProcessor(addAllRoutes), byProcessor([&state] { bareRoundTrip(state); }));
  requireActive(state, kRoutes);
}
BENCH_ROW(routeInstall)->Unit(benchmark::kMillisecond);

void routeFreshen(benchmark::State& state) {
  Connected connected;
  fillKernel();
  auto floor = [&state] {
    bareRoundTrip(state);
    save_shared_memory();
  };
  bench::inTurns(state, byProcessor([] { freshenRouteTable(0, "--"); }), byProcessor(floor));
  requireActive(state, kRoutes);
}
BENCH_ROW(routeFreshen)->Unit(benchmark::kMillisecond);

}  // namespace
