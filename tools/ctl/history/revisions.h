// SPDX-License-Identifier: Apache-2.0
// The history: what the settings were after each change, the newest fifty, and who made it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/ctl/history/record.h"
#include "tools/ctl/home.h"
#include "tools/ctl/settings/revision.h"

namespace ctl {

struct Revision {
  int number = 0;
  std::string time = {};  // ISO 8601, UTC
  std::string user = {};
  std::string source = {};  // a front end, or kOutside
  std::string comment = {};
  std::string command = {};
};

// The source of a revision of changes that were not made through kestrovectl.
inline constexpr char kOutside[] = "outside";
inline constexpr int kRevisionsKept = 50;

// {"revision", "time", "user", "source", "comment", "command"}.
Json revisionJson(const Revision& revision);

class Revisions {
 public:
  explicit Revisions(const Home& home) : home_(home) {}

  // Oldest first. Calls the function with the name of each file that is damaged, and leaves it out.
  template <typename Damaged>
  std::vector<Revision> all(Damaged damaged) const;

  // Throws kRefused where there is none of this number, and kSystem where its file is damaged.
  Revision find(int number) const;
  std::vector<SettingLine> lines(int number) const;

  // What the newest one says that can be read.
  struct Newest {
    int number = 0;
    std::string sum;          // of its settings
    std::string fingerprint;  // of the tables that they were made from
  };
  std::optional<Newest> newest() const;

  // Writes the next one and lets go of what is too old. Whoever calls has the lock of the folder.
  int add(Revision revision, const std::string& body, const std::string& fingerprint) const;

 private:
  std::vector<int> numbers() const;
  std::optional<Record> read(int number) const;

  const Home& home_;
};

std::string revisionFile(int number);
Revision revisionOf(const Record& record);

template <typename Damaged>
std::vector<Revision> Revisions::all(Damaged damaged) const {
  std::vector<Revision> found;
  for (const int number : numbers()) {
    if (const std::optional<Record> record = read(number)) {
      found.push_back(revisionOf(*record));
    } else {
      damaged(home_.pathOf(revisionFile(number)));
    }
  }
  return found;
}

}  // namespace ctl
