// SPDX-License-Identifier: Apache-2.0
// The route tables, quickly: a full dump writes thousands of rows.
#include "dump/print.h"
#include "dump/sections.h"
#include "store/codes.h"
#include "store/slots.h"

namespace kestrove {
namespace {

using sys::putText;

constexpr size_t kLongestRow = 128;

// The row's status and the end of its line.
char* putStatus(char* at, uint32_t status) {
  return putText(putText(at, shm_getMessage(&kRowStatusNames, static_cast<int>(status))), "\n");
}

char* putRoute(char* at, const RouteEntry& route) {
  at = putText(sys::putQuadColumn<18>(at, route.destination), " ");
  at = putText(sys::putQuadColumn<18>(at, route.netmask), " ");
  at = putText(sys::putQuadColumn<18>(at, route.gateway), " ");
  return putStatus(at, route.status);
}

char* putRoute6(char* at, const Route6Entry& route) {
  at = putText(sys::putIp6(at, route.destination), "/");
  at = putText(sys::putNumber(at, static_cast<int32_t>(route.prefixLength)), " \n   ");
  at = putText(sys::putIp6Column<39>(at, route.gateway), " ");
  return putStatus(at, route.status);
}

template <typename Slot, size_t N>
void dumpList(sys::TextWriter& out, const Slot (&slots)[N], uint32_t head, char* (*put)(char*, const Slot&)) {
  bool empty = true;
  eachInOrder(slots, head, [&](const Slot& route) {
    out.advance(put(out.room(kLongestRow), route));
    empty = false;
    return true;
  });
  if (empty) out.text("** No entries **\n");
}

}  // namespace

void dumpRoutes(sys::TextWriter& out) {
  print(out, "%-18s %-18s %-18s %s\n", "Dest Addr", "Dest Mask", "Next Hop", "Row Status");
  dumpList(out, shm->routes.slot, shm->routes.head, putRoute);
}

void dumpRoutes6(sys::TextWriter& out) {
  print(out, "%-43s\n   %-39s %s\n", "Destination Address/Prefix", "Next Hop", "Row Status");
  dumpList(out, shm->routes6.slot, shm->routes6.head6, putRoute6);
}

}  // namespace kestrove
