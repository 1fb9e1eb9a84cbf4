// SPDX-License-Identifier: Apache-2.0
// The keyword table and the document that describes it.
#include "config/keywords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace kestrove {
namespace {

constexpr size_t kLines = 41;

std::vector<std::string> cells(const std::string& row) {
  std::vector<std::string> cells;
  std::istringstream text(row);
  for (std::string cell; std::getline(text, cell, '|');) {
    size_t begin = cell.find_first_not_of(' ');
    size_t end = cell.find_last_not_of(' ');
    cells.push_back(begin == std::string::npos ? "" : cell.substr(begin, end - begin + 1));
  }
  return cells;
}

// "KEYWORD line" of every row of the document's keyword table.
std::vector<std::string> documented() {
  std::ifstream file(KESTROVE_DOCUMENT);
  std::vector<std::string> rows;
  bool inside = false;
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("## ", 0) == 0) inside = line == "## Keywords";
    if (!inside || line.rfind("| ", 0) != 0 || line.rfind("| Keyword", 0) == 0) continue;
    rows.push_back(cells(line)[1] + " " + cells(line)[4]);
  }
  return rows;
}

// The table stands in the order of the lines; those of the three rule keywords, its last ones, are one place.
std::vector<std::string> listed() {
  std::vector<std::string> rows;
  for (const Keyword& keyword : writtenKeywords()) {
    const size_t line = std::min<size_t>(rows.size() + 1, kLines);
    rows.push_back(std::string(keyword.name) + " " + std::to_string(line));
  }
  for (const Keyword& keyword : keywords().subspan(rows.size())) rows.push_back(std::string(keyword.name) + " ");
  return rows;
}

TEST(KeywordsTest, DocumentHasEveryKeywordWithItsLine) {
  EXPECT_EQ(kLines + 2, writtenKeywords().size());
  EXPECT_EQ(listed(), documented());
}

TEST(KeywordsTest, EveryKeywordIsFoundAndOnce) {
  std::set<std::string_view> names;
  for (const Keyword& keyword : keywords()) {
    EXPECT_EQ(&keyword, findKeyword(keyword.name));
    EXPECT_TRUE(names.insert(keyword.name).second) << keyword.name;
  }
  EXPECT_EQ(69u, names.size());
}

TEST(KeywordsTest, RowsHaveFunctionsOfTheirOwn) {
  for (const Keyword& keyword : keywords()) {
    EXPECT_TRUE(keyword.kind != Kind::kRow || keyword.read != nullptr) << keyword.name;
  }
  for (const Keyword& keyword : writtenKeywords()) {
    const bool withTheRowsAbove = keyword.name.starts_with("SELEC_ACCEL_");
    EXPECT_EQ(keyword.kind == Kind::kRow && !withTheRowsAbove, keyword.write != nullptr) << keyword.name;
  }
}

TEST(KeywordsTest, OtherWordsAreNotFound) {
  for (const Keyword& keyword : keywords()) {
    std::string name(keyword.name);
    EXPECT_EQ(nullptr, findKeyword(name + "X"));
    EXPECT_EQ(nullptr, findKeyword("X" + name));
    name[0] = static_cast<char>(name[0] | 0x20);
    EXPECT_EQ(nullptr, findKeyword(name));
  }
  EXPECT_EQ(nullptr, findKeyword(""));
  EXPECT_EQ(nullptr, findKeyword(std::string(510, 'A')));
}

}  // namespace
}  // namespace kestrove
