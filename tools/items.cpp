// SPDX-License-Identifier: Apache-2.0
// Prints the document of the items.
#include <stdio.h>

#include <bit>
#include <string>
#include <vector>

#include "tools/ctl/item_names.h"

using ctl::ItemFamily;
using ctl::ItemForm;
using ctl::ItemRow;

namespace {

using Words = std::vector<std::string>;

std::string code(const std::string& text) { return text.empty() ? "" : "`" + text + "`"; }

std::string joined(const Words& words, const char* between) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : between) + word;
  return line;
}

void printRow(const Words& cells) { printf("| %s |\n", joined(cells, " | ").c_str()); }

std::string idsOf(const ItemRow& row) {
  return std::to_string(row.id) + (row.synonym ? ", " + std::to_string(row.synonym) : "");
}

std::string fieldOf(const ItemRow& row) {
  const std::string name = row.name;
  return code(row.field) + (name == row.field ? "" : " (" + code(name) + ")");
}

std::string acceptedBy(const ItemRow& row) {
  if (!*row.range) return "read only";
  return std::string(row.range) + (row.noHoles ? "; not 0, no holes" : "");
}

std::string numberOf(uint32_t bit) { return "bit " + std::to_string(std::countr_zero(bit)); }

// In the order of their happening.
Words effectsOf(const ItemRow& row) {
  Words effects;
  if (row.dropsWanArp) effects.push_back("before: the WAN gateway's ARP entry is deleted");
  if (row.onEvent) effects.push_back("event " + std::to_string(row.onEvent) + " or " + std::to_string(row.offEvent));
  if (row.saves) effects.push_back("save");
  if (row.bit) effects.push_back(numberOf(row.bit));
  if (row.pbrBit) effects.push_back(numberOf(row.pbrBit) + " while policy routing is on");
  if (row.modeEvent) effects.push_back("mode event " + std::to_string(row.modeEvent));
  if (*row.action) effects.push_back(row.action);
  return effects;
}

std::string lastWords(const ItemRow& row) {
  Words words = {joined(effectsOf(row), ", "), row.present, row.remark};
  std::erase(words, "");
  return joined(words, "; ");
}

// Behind the words what they count, or the words that stand for values.
std::string scriptOf(const ItemRow& row) {
  std::string cell = code(row.script);
  if (*row.scriptUnit) cell += " (" + std::string(row.scriptUnit) + ")";
  Words values;
  for (const ctl::NamedNumber& word : row.scriptWords) values.push_back(std::to_string(word.number) + " " + word.name);
  return cell + (values.empty() ? "" : " (" + joined(values, ", ") + ")");
}

void printItem(const ItemRow& row) {
  const char* form = row.form == ItemForm::kSwitch ? "switch" : "number";
  printRow({idsOf(row), code(row.code), fieldOf(row), form, row.unit, acceptedBy(row), lastWords(row),
            code(row.keyword), scriptOf(row)});
}

void printNetworkItem(const ItemRow& row) {
  printRow(
      {idsOf(row), code(row.code), fieldOf(row), acceptedBy(row), lastWords(row), code(row.keyword), scriptOf(row)});
}

void printText(const ItemRow& row) {
  printRow({idsOf(row), code(row.code), fieldOf(row), acceptedBy(row), code(row.keyword)});
}

struct Section {
  const char* opening;
  ItemFamily family;
  void (*print)(const ItemRow& row);
};

constexpr Section kSections[] = {
    {R"(# Items

What the numbers of `getKestroveConfigItem`, `getNetworkConfigItem` and `getShmString` mean, and what their setters accept
and do. Written by `kestrove-items` from the table that the setters are made from; a test compares it with the code.

Codes are of `codes.h`. The field's name is `kestrovectl`'s word for the item, unless another stands beside it. The
keyword is that of its line in a saved configuration file; a change of an item without one lasts until the store is built
again. The last column is what stands between `set` and the value in a saved script, with the unit of the script where
it is another one and the words that it has for values; `pbr` is taken for `prb`. Texts have no line there.

## Numbered items

A switch is 1 for on, 2 for off. A bound named by an item is the store's. What a change does outside Configuration Mode
stands in the order of its happening; a bit of `pendingChanges` goes with a signal to the engine, and neither is there in
Debug Mode.

| Id | Code | Field | Holds | Unit | Accepts | On a change | Keyword | Script |
|---:|---|---|---|---|---|---|---|---|
)",
     ItemFamily::kConfig, printItem},
    {R"(
## Network items

Addresses in network byte order. `kestrovectl` takes masks also as prefix lengths; the library refuses a mask only where
its row says so. After what a row names, a change outside Configuration Mode saves the store and refreshes the route
table. Mode events drive the operating modes.

| Id | Code | Field | Accepts | On a change | Keyword | Script |
|---:|---|---|---|---|---|---|
)",
     ItemFamily::kNetwork, printNetworkItem},
    {R"(
## Texts

A change saves the store.

| Id | Code | Field | Accepts | Keyword |
|---:|---|---|---|---|
)",
     ItemFamily::kText, printText},
};

void print(const Section& section) {
  printf("%s", section.opening);
  for (const ItemRow& row : ctl::itemRows()) {
    if (row.family == section.family) section.print(row);
  }
}

}  // namespace

int main() {
  for (const Section& section : kSections) print(section);
  return fflush(stdout) == 0 ? 0 : 1;
}
