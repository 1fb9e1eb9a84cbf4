// SPDX-License-Identifier: Apache-2.0
#include "store/route_slots.h"

#include <stddef.h>

namespace kestrove {
namespace {

constexpr uint32_t kUsed = 1;

template <typename Slot, size_t N>
class Chain {
 public:
  Chain(uint32_t& head, Slot (&slots)[N]) : head_(head), slots_(slots) {}

  // Settles whether the slot is in use. True when it is.
  bool settle(uint32_t slot) {
    bool reached = linkTo(slot) != nullptr;
    slots_[slot].inUse = reached ? kUsed : SHM_NO_SLOT;
    return reached;
  }

  // A new slot that stands on the chain leaves no place for the old one; else the old one stays.
  bool swap(uint32_t slot, uint32_t old) {
    if (!settle(slot)) return false;
    if (uint32_t* link = linkTo(old)) *link = slots_[old].next;
    keepOrder();
    return !settle(old);
  }

 private:
  // The word that leads to a slot, null when none does.
  uint32_t* linkTo(uint32_t slot) {
    if (head_ >= N || slots_[head_].inUse != kUsed) return nullptr;
    uint32_t* link = &head_;
    for (size_t steps = 0; steps < N && *link < N; ++steps) {
      if (*link == slot) return link;
      link = &slots_[*link].next;
    }
    return nullptr;
  }

  uint32_t& head_;
  Slot (&slots_)[N];
};

Chain<RouteEntry, SHM_ROUTES> chain4(ShmData& store) { return {store.routes.head, store.routes.slot}; }
Chain<Route6Entry, SHM_ROUTES6> chain6(ShmData& store) { return {store.routes6.head6, store.routes6.slot}; }

Outcome end(ShmData& store, bool finished) {
  Journal(store).end();
  return finished ? Outcome::kFinished : Outcome::kTakenBack;
}

template <typename Chain>
Outcome finishLinking(ShmData& store, Chain chain, const Note& note) {
  return note.hole < SHM_ROUTES ? end(store, chain.settle(note.hole)) : Outcome::kNonsense;
}

template <typename Chain>
Outcome finishUnlinking(ShmData& store, Chain chain, const Note& note) {
  return note.hole < SHM_ROUTES ? end(store, !chain.settle(note.hole)) : Outcome::kNonsense;
}

template <typename Chain>
Outcome finishSwapping(ShmData& store, Chain chain, const Note& note) {
  bool slots = note.hole < SHM_ROUTES && note.value < SHM_ROUTES && note.hole != note.value;
  return slots ? end(store, chain.swap(note.hole, note.value)) : Outcome::kNonsense;
}

static_assert(int{SHM_ROUTES} == int{SHM_ROUTES6}, "one bound for both lists");

}  // namespace

Outcome finishRouteLinking(ShmData& store, const Note& note) { return finishLinking(store, chain4(store), note); }
Outcome finishRouteUnlinking(ShmData& store, const Note& note) { return finishUnlinking(store, chain4(store), note); }
Outcome finishRouteSwapping(ShmData& store, const Note& note) { return finishSwapping(store, chain4(store), note); }
Outcome finishRoute6Linking(ShmData& store, const Note& note) { return finishLinking(store, chain6(store), note); }
Outcome finishRoute6Unlinking(ShmData& store, const Note& note) { return finishUnlinking(store, chain6(store), note); }
Outcome finishRoute6Swapping(ShmData& store, const Note& note) { return finishSwapping(store, chain6(store), note); }

}  // namespace kestrove
