// SPDX-License-Identifier: Apache-2.0
// One command that changes the store: its revision, its journal, and the confirmation that it waits for.
#pragma once

#include <optional>
#include <string>

#include "tools/ctl/history/journal.h"
#include "tools/ctl/history/ledger.h"

namespace ctl {

// What a recorded change has to say beside its result.
struct Recorded {
  int revision = 0;                // 0: nothing that a revision holds has changed, or it could not be written
  std::string missing;             // why it could not
  std::optional<Pending> pending;  // what waits for its confirmation now

  // "revision" and "confirm" where there is something to say.
  void addTo(Json& result) const;
  // Lines for a human reader, and the warning on standard error.
  std::string text() const;
  void warn() const;
};

// While one lives, what changes the store is part of something that is recorded already, or of a copy that is nobody's.
class PartOfAnother {
 public:
  PartOfAnother();
  ~PartOfAnother();
  PartOfAnother(const PartOfAnother&) = delete;
  PartOfAnother& operator=(const PartOfAnother&) = delete;
  static bool any();
};

class Recording {
 public:
  // Whether this command has made one, or is part of one.
  static bool any();
  // In front of the next command.
  static void forget();

  // In front of the store's lock: waits for the lock of the folder, finishes what a dead command left, and refuses a
  // second confirmation. Within a command that is recorded already nothing more is recorded.
  explicit Recording(const Session& session);
  // What was refused half-way is recorded all the same.
  ~Recording();
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  // With the store held, in front of the change. From here on a death takes back what --confirm was given for.
  void begin();
  // A change of many steps leads there: after a death in between it is gone on with. Nothing where --confirm was given.
  void aim(const Image& target);
  // A change of something that no setting shows.
  void always() { always_ = true; }
  // Behind the change, with the store still held; it may be another store by now, or one that is yet to come.
  Recorded finish();
  Recorded finish(const ShmData& store);

 private:
  void lock();
  void takeOver();
  void arm();
  void writeJournal(Stage stage);
  void dropJournal();
  void await(Recorded& recorded);
  Entry entryOf(Stage stage) const;
  Revision revision() const;

  const Session& session_;
  std::optional<PartOfAnother> others_;
  std::optional<Home> home_;
  std::optional<HomeLock> lock_;
  Ledger ledger_;
  Entry entry_;
  std::string missing_;  // why nothing can be kept
  bool inert_;
  bool begun_ = false;
  bool journaled_ = false;
  bool always_ = false;
};

}  // namespace ctl
