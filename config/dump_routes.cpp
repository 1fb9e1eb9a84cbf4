// The route tables, quickly: a full dump writes thousands of rows.
#include "config/dump_print.h"
#include "config/dump_sections.h"
#include "store/chain.h"
#include "store/codes.h"

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

template <typename Slot, uint32_t N>
void dumpChain(sys::TextWriter& out, uint32_t head, const Slot (&slots)[N], char* (*put)(char*, const Slot&)) {
  bool empty = true;
  walkChain(head, slots, [&](const Slot& route) {
    empty = false;
    out.advance(put(out.room(kLongestRow), route));
  });
  if (empty) out.text("** No entries **\n");
}

}  // namespace

void dumpRoutes(sys::TextWriter& out) {
  print(out, "%-18s %-18s %-18s %s\n", "Dest Addr", "Dest Mask", "Next Hop", "Row Status");
  dumpChain(out, shm->routes.head, shm->routes.slot, putRoute);
}

void dumpRoutes6(sys::TextWriter& out) {
  print(out, "%-43s\n   %-39s %s\n", "Destination Address/Prefix", "Next Hop", "Row Status");
  dumpChain(out, shm->routes6.head6, shm->routes6.slot, putRoute6);
}

}  // namespace kestrove
