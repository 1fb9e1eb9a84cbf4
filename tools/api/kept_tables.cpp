// SPDX-License-Identifier: Apache-2.0
#include "tools/api/kept_tables.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <map>
#include <set>

#include "kestrove/layout.h"
#include "kestrove/segment.h"
#include "tools/api/tag.h"
#include "tools/common/steady_clock.h"
#include "tools/ctl/held_look.h"

namespace api {
namespace {

constexpr size_t kMost = 128;            // tables: each item is one
constexpr size_t kLongest = 256 * 1024;  // of their texts together

// Of the store.
struct Part {
  size_t begin;
  size_t end;
};

using Parts = std::array<Part, 2>;

constexpr Parts kUncounted = {{{0, offsetof(ShmData, qos)}, {offsetof(ShmData, lanHardwareAddress), sizeof(ShmData)}}};
constexpr Parts kAll = {{{0, offsetof(ShmData, qos)}, {offsetof(ShmData, qos), sizeof(ShmData)}}};

// Behind the last rule nothing is looked at: the table has room for thousands.
size_t lengthOf(const Part& part, const ShmData& store) {
  if (part.begin != 0) return part.end - part.begin;
  const auto count = static_cast<size_t>(store.filterTable.ruleCount);
  return count > SHM_RULES ? part.end : offsetof(ShmData, filterTable.rule) + count * sizeof(FilterRule);
}

class Kept {
 public:
  // For that many seconds.
  Kept(const Parts& parts, double longest) : parts_(parts), longest_(longest) {}

  const KeptTable* find(const std::string& key) const {
    const auto found = tables_.find(key);
    if (found == tables_.end() || tools::steadySeconds() - found->second.since > longest_ || !isOf(*shm))
      return nullptr;
    return &found->second.table;
  }
  bool printed(const std::string& key) const { return printed_.contains(key) && isOf(*shm); }
  void take(const ShmData& store) {
    if (isOf(store)) return;
    clear();
    printed_.clear();
    for (size_t i = 0; i < parts_.size(); ++i) {
      const auto* begin = reinterpret_cast<const char*>(&store) + parts_[i].begin;
      copies_[i].assign(begin, lengthOf(parts_[i], store));
    }
  }
  void add(const std::string& key, const std::string& text) {
    printed_.insert(key);
    if (text.size() > kLongest) return;
    if (tables_.size() >= kMost || length_ + text.size() > kLongest) clear();
    length_ -= tables_[key].table.text.size();
    tables_[key] = {{text, tagOf(text)}, tools::steadySeconds()};
    length_ += text.size();
  }

 private:
  struct Entry {
    KeptTable table;
    double since = 0;
  };

  bool isOf(const ShmData& store) const {
    for (size_t i = 0; i < parts_.size(); ++i) {
      const auto* begin = reinterpret_cast<const char*>(&store) + parts_[i].begin;
      const std::string& copy = copies_[i];
      if (copy.empty() || copy.size() != lengthOf(parts_[i], store)) return false;
      if (memcmp(copy.data(), begin, copy.size()) != 0) return false;
    }
    return true;
  }

  void clear() {
    tables_.clear();
    length_ = 0;
  }

  const Parts& parts_;
  double longest_;
  std::array<std::string, std::tuple_size_v<Parts>> copies_;
  std::map<std::string, Entry> tables_;
  size_t length_ = 0;
  std::set<std::string> printed_;
};

Kept ofStore(kUncounted, std::numeric_limits<double>::infinity());
Kept ofMore(kAll, 1);

Kept& keptAs(MadeOf made) { return made == MadeOf::kStore ? ofStore : ofMore; }

std::string keyOf(const std::vector<std::string>& words) {
  std::string key;
  for (const std::string& word : words) key += word + '\0';
  return key;
}

// Each item is a table of one row.
void addItems(const std::string& text) {
  for (const Json& row : Json::parse(text)) {
    ofStore.add(keyOf({"show", row["item"].get<std::string>()}), ctl::jsonText(Json::array({row}), 2) + "\n");
  }
}

}  // namespace

std::optional<KeptTable> keptTable(const std::vector<std::string>& words, MadeOf made) {
  const KeptTable* found = shm ? keptAs(made).find(keyOf(words)) : nullptr;
  return found ? std::optional(*found) : std::nullopt;
}

bool printedSince(const std::vector<std::string>& words) { return shm && ofStore.printed(keyOf(words)); }

Printed runAndKeep(const ctl::Session& session, const std::vector<std::string>& words, MadeOf made) {
  Kept& kept = keptAs(made);
  bool taken = false;
  Printed printed;
  {
    const ctl::ReadLook look([&] {
      kept.take(*shm);
      taken = true;
    });
    printed = run(session, words);
  }
  if (!taken || printed.exit != ctl::kDone) return printed;
  kept.add(keyOf(words), printed.text);
  if (words == std::vector<std::string>{"show"}) addItems(printed.text);
  return printed;
}

}  // namespace api
