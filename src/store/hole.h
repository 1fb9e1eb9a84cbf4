// SPDX-License-Identifier: Apache-2.0
// Shifting the records of a table, one at a time, so that a death at any instant can be made good.
#pragma once

#include <string.h>

#include "store/bounds.h"
#include "store/journal.h"

// Nearly every processor that runs the 32-bit library has them as well, but not every one must.
#if defined(__i386__) && !defined(__SSE2__)
#define KESTROVE_ASK_FOR_WIDE_REGISTERS
#endif

namespace kestrove {

// The hole of a note that stands in the journal: as many words as a record has that count for nothing, and what stands
// below and above it is the table. Each step copies words over the hole's edge and then says so; their source stays
// until the next step, so a torn copy is made again. Whole lines of the processor's cache go as fast as one move of
// memory.
template <typename Record>
class Hole {
 public:
  static constexpr uint32_t wordOf(uint32_t record) { return record * uint32_t{sizeof(Record) / 4}; }

  Hole(ShmData& store, const Note& note, Record* slots)
      : journal_(store), note_(note), hole_(note.hole), bytes_(reinterpret_cast<char*>(slots)) {}

  void moveTo(uint32_t record) {
    size_t end = wordOf(record);
#ifdef KESTROVE_ASK_FOR_WIDE_REGISTERS
    if (__builtin_cpu_supports("sse2")) return moveWide(end);
#endif
    move(end);
  }

 private:
  static constexpr size_t kWord = sizeof(uint32_t);
  static constexpr size_t kRecord = sizeof(Record) / kWord;
  static constexpr size_t kLine = 64 / kWord;
  static constexpr size_t kStep = kLine <= kRecord ? kLine : 1;
  static_assert(sizeof(Record) % kWord == 0);

#ifdef KESTROVE_ASK_FOR_WIDE_REGISTERS
  [[gnu::target("sse2"), gnu::flatten]] void moveWide(size_t end) {
    Hole inRegisters = *this;
    inRegisters.move(end);
    *this = inRegisters;
  }
#endif

  void move(size_t end) {
    if (hole_ < end) {
      moveUp(end);
    } else {
      moveDown(end);
    }
  }

  bool lineStartsAt(size_t word) const { return reinterpret_cast<uintptr_t>(bytes_ + word * kWord) % 64 == 0; }

  void moveUp(size_t end) {
    while (hole_ < end && !lineStartsAt(hole_)) up<1>();
    while (hole_ + kStep <= end) up<kStep>();
    while (hole_ < end) up<1>();
  }
  void moveDown(size_t end) {
    while (hole_ > end && !lineStartsAt(hole_ + kRecord)) down<1>();
    while (hole_ >= end + kStep) down<kStep>();
    while (hole_ > end) down<1>();
  }

  template <size_t N>
  void up() {
    copy<N>(hole_, hole_ + kRecord);
    arrive(hole_ + N);
  }
  template <size_t N>
  void down() {
    copy<N>(hole_ + kRecord - N, hole_ - N);
    arrive(hole_ - N);
  }

  void arrive(size_t word) {
    hole_ = word;
    note_.hole = static_cast<uint32_t>(word);
    journal_.progress(note_);
  }

  // Through registers, as wide as the processor has them.
  template <size_t N>
  void copy(size_t to, size_t from) {
    using Piece = uint32_t __attribute__((vector_size(N == 1 ? 4 : 16), aligned(4), may_alias));
    constexpr size_t kPieces = N * kWord / sizeof(Piece);
    const auto* source = reinterpret_cast<const Piece*>(bytes_ + from * kWord);
    auto* target = reinterpret_cast<Piece*>(bytes_ + to * kWord);
    Piece pieces[kPieces];
    for (size_t i = 0; i < kPieces; ++i) pieces[i] = source[i];
    for (size_t i = 0; i < kPieces; ++i) target[i] = pieces[i];
  }

  Journal journal_;
  Note note_;
  size_t hole_;
  char* bytes_;
};

// Whether a count is the one from before a change or the one that the change leaves.
inline bool countedAs(int32_t count, int capacity, uint32_t before, uint32_t after) {
  auto entries = static_cast<uint32_t>(boundedCount(count, capacity));
  return entries == before || entries == after;
}

// The records behind the hole move down by one and the count follows.
template <typename Record>
Outcome closeHole(ShmData& store, const Note& note, Record* slots, int32_t& count, int capacity) {
  if (note.value == 0 || !countedAs(count, capacity, note.value, note.value - 1)) return Outcome::kNonsense;
  if (note.hole > Hole<Record>::wordOf(note.value - 1)) return Outcome::kNonsense;
  Hole<Record>(store, note, slots).moveTo(note.value - 1);
  count = static_cast<int32_t>(note.value - 1);
  Journal(store).end();
  return Outcome::kFinished;
}

}  // namespace kestrove
