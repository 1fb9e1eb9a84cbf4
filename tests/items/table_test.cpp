// SPDX-License-Identifier: Apache-2.0
// The rows of the items beside the keywords of the configuration file and the names of their ids.
#include <gtest/gtest.h>
#include <stddef.h>

#include <fstream>
#include <regex>
#include <set>
#include <string>

#include "config/keywords.h"
#include "kestrove/codes.h"
#include "kestrove/layout.h"

namespace kestrove {
namespace {

struct Row {
  const char* code;
  int id;
  const char* field;
  size_t place;
  size_t width;
  const char* synonymCode = nullptr;
  int synonym = 0;
  const char* keyword = "";
};

#define ITEM(number, member, ...)           \
  {.code = #number,                         \
   .id = number,                            \
   .field = #member,                        \
   .place = offsetof(ConfigRecord, member), \
   .width = sizeof(ConfigRecord::member),   \
   __VA_ARGS__},
#define NETWORK_ITEM ITEM
#define TEXT ITEM
#define ALSO(number) .synonymCode = #number, .synonym = number,
#define KEYWORD(word) .keyword = word,

const Row kRows[] = {
#include "items/items.def"
};

bool isOf(const Row& row, const Keyword& keyword) {
  return keyword.place.offset == offsetof(ShmData, config) + row.place && keyword.place.width == row.width;
}

// The keyword that a saved file has for a field; empty where it has none.
std::string writtenFor(const Row& row) {
  for (const Keyword& keyword : writtenKeywords()) {
    if (isOf(row, keyword)) return std::string(keyword.name);
  }
  return "";
}

TEST(ItemTableTest, EveryRowNamesTheLineThatASavedFileHasForIt) {
  for (const Row& row : kRows) EXPECT_EQ(writtenFor(row), row.keyword) << row.field;
}

TEST(ItemTableTest, EveryFieldHasOneRow) {
  for (const Row& row : kRows) {
    for (const Row& other : kRows) {
      if (&row != &other) {
        EXPECT_NE(row.place, other.place) << row.field << " " << other.field;
      }
    }
  }
}

std::string named(const std::string& code, int id, const std::string& field) {
  return code + " " + std::to_string(id) + " " + field;
}

// "CODE number field" of every id in the header of the names; the remark beside an id begins with its field.
std::set<std::string> namedIds() {
  static const std::regex line(R"( +(SHM_(?:ITEM|NET|TEXT)_\w+) = (\d+),? +/\* ([\w\[\]]+).*)");
  std::ifstream file(KESTROVE_CODES);
  std::set<std::string> ids;
  std::smatch parts;
  for (std::string text; std::getline(file, text);) {
    if (std::regex_match(text, parts, line)) ids.insert(named(parts[1], std::stoi(parts[2]), parts[3]));
  }
  return ids;
}

TEST(ItemTableTest, EveryNamedIdHasItsRow) {
  std::set<std::string> rows;
  for (const Row& row : kRows) {
    rows.insert(named(row.code, row.id, row.field));
    if (row.synonym) rows.insert(named(row.synonymCode, row.synonym, row.field));
  }
  EXPECT_EQ(rows, namedIds());
}

}  // namespace
}  // namespace kestrove
