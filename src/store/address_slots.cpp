// SPDX-License-Identifier: Apache-2.0
#include "store/address_slots.h"

#include "store/bounds.h"
#include "store/hole.h"
#include "store/rule_slots.h"

namespace kestrove {
namespace {

template <typename Entry>
void append(Entry* entries, int32_t& count, const Entry& entry) {
  entries[count] = entry;
  keepOrder();
  ++count;
}

template <typename Entry>
void drop(ShmData& store, Work closing, int index, int count) {
  carryOut(store, {closing, Hole<Entry>::wordOf(static_cast<uint32_t>(index)), 0, static_cast<uint32_t>(count)});
}

}  // namespace

void appendAddress(ShmData& store, const ManagementAddress& entry) {
  append(store.managementAddress, store.managementAddressCount, entry);
}

void appendAddress6(ShmData& store, const Ip6Address& entry) { append(store.ip6Address, store.ip6Count, entry); }

void dropAddress(ShmData& store, int index) {
  drop<ManagementAddress>(store, Work::kAddressClosing, index, managementEntries(store));
}

void dropAddress6(ShmData& store, int index) {
  drop<Ip6Address>(store, Work::kAddress6Closing, index, ip6Entries(store));
}

// Beside a full rule table there is no record to spare: a death inside the copy may tear the entry.
void changeAddress6(ShmData& store, int index, const Ip6Address& value) {
  if (layAside(store, value)) {
    auto spare = static_cast<uint32_t>(ruleEntries(store));
    carryOut(store, {Work::kAddress6Changing, 0, static_cast<uint32_t>(index), spare});
  } else {
    store.ip6Address[index] = value;
  }
}

Outcome finishAddressClosing(ShmData& store, const Note& note) {
  return closeHole(store, note, store.managementAddress, store.managementAddressCount, SHM_MANAGEMENT_ADDRESSES);
}

Outcome finishAddress6Closing(ShmData& store, const Note& note) {
  return closeHole(store, note, store.ip6Address, store.ip6Count, SHM_IP6_ADDRESSES);
}

Outcome finishAddress6Changing(ShmData& store, const Note& note) {
  if (!spareIsAt(store, note.value) || note.small >= static_cast<uint32_t>(ip6Entries(store)))
    return Outcome::kNonsense;
  takeSpare(store, store.ip6Address[note.small]);
  Journal(store).end();
  return Outcome::kFinished;
}

}  // namespace kestrove
