// The keyword table and the document that describes it.
#include "config/keywords.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace kestrove {
namespace {

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

// The rows of the three rule keywords are written together.
std::string positionOf(const Keyword& keyword) {
  if (keyword.name.substr(0, 11) == "SELEC_ACCEL") return "41";
  return keyword.position == kNeverWritten ? "" : std::to_string(keyword.position);
}

TEST(KeywordsTest, DocumentHasEveryKeywordWithItsLine) {
  std::vector<std::string> expected;
  for (const Keyword& keyword : keywords()) expected.push_back(std::string(keyword.name) + " " + positionOf(keyword));
  EXPECT_EQ(expected, documented());
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
    if (keyword.kind != Kind::kRow) continue;
    EXPECT_NE(nullptr, keyword.read) << keyword.name;
    EXPECT_EQ(keyword.position != kNeverWritten, keyword.rows != nullptr) << keyword.name;
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
