// SPDX-License-Identifier: Apache-2.0
// What every command prints with --json, held to the shape that the grammar gives it.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "tests/support/ports.h"
#include "tests/tools/programs.h"
#include "tools/ctl/history/changing.h"
#include "tools/ctl/place.h"
#include "tools/ctl/reference.h"
#include "tools/ctl/shape.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;

struct RunLine {
  std::string place;  // "tables.runs:3"
  int status = 0;
  std::string words;
  std::string input;
  bool prepares = false;
};

std::string withLineFeeds(std::string text) {
  for (size_t at = 0; (at = text.find("\\n", at)) != std::string::npos; ++at) text.replace(at, 2, "\n");
  return text;
}

RunLine parsed(std::string text, const std::string& place) {
  RunLine line = {.place = place, .words = {}, .input = {}};
  if (text.starts_with("! ")) {
    line.prepares = true;
    line.words = text.substr(2);
    return line;
  }
  if (const size_t from = text.find(" < "); from != std::string::npos) {
    line.input = withLineFeeds(text.substr(from + 3));
    text.erase(from);
  }
  std::istringstream words(text);
  if (words >> line.status) text = text.substr(text.find(' ') + 1);
  line.words = text;
  return line;
}

std::vector<std::filesystem::path> runFiles() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(KESTROVE_RUNS)) {
    if (entry.path().extension() == ".runs") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<RunLine> linesOf(const std::filesystem::path& path) {
  std::vector<RunLine> lines;
  std::ifstream file(path);
  int number = 0;
  for (std::string text; std::getline(file, text);) {
    const std::string place = path.filename().string() + ":" + std::to_string(++number);
    if (!text.empty() && text[0] != '#') lines.push_back(parsed(text, place));
  }
  return lines;
}

const ctl::Command* rowOf(const std::string& words) {
  return ctl::placeBehind(ctl::grammar(), ctl::wordsOf(words)).row;
}

// Explain and preview lead into the line that they look at.
const ctl::Command* outermostRow(const std::string& words) {
  const ctl::Command* row = nullptr;
  std::string begin;
  for (const std::string& word : ctl::wordsOf(words)) {
    begin += (begin.empty() ? "" : " ") + word;
    row = rowOf(begin);
    if (row && !row->values.empty() && row->values.back().type.form == ctl::Form::kCommandLine) return row;
  }
  return row;
}

class CtlJsonTest : public StoreTest, public ::testing::WithParamInterface<std::string> {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    setenv("KESTROVECTL", KESTROVECTL, 1);
    ASSERT_EQ(0, run("ip link show br0 || init-bridging eth0 eth1").status);
    namePorts("eth0", "eth1", "eth0");
    shm->config.singleInterfaceMode = SHM_OFF;
    ManagementAddress address = {4, 1, inet_addr("192.168.10.9"), inet_addr("255.255.255.0"), {}, 0, SHM_IF_BRIDGE};
    shm->managementAddress[0] = address;
    shm->managementAddressCount = 1;
    for (const char* line : {"rule add 0 --proto tcp --kbps 512", "rule add 0 --to fd00::/8 --target bridge",
                             "route add 172.20.0.0/16 192.168.10.3", "route6 add fd00:20::/32 fd00:10::3",
                             "address add fd00:10::9/64 --br0"}) {
      ASSERT_EQ(0, ctl(line).status) << line;
    }
    for (const char* name : {"alice", "bertha"}) {
      ASSERT_EQ(0, ctl(std::string("user add ") + name, "Passw0rd!\n").status);
    }
    logEvent(21, 2, "alice");
  }
  void TearDown() override {
    writeFile("/etc/passwd", passwords_);
    StoreTest::TearDown();
  }

 private:
  const std::string passwords_ = readFile("/etc/passwd");
};

void compare(const RunLine& line, const Json& printed) {
  const ctl::Command* row = outermostRow(line.words);
  ASSERT_TRUE(row && *ctl::shapeOf(*row)) << line.place << ": no shape for " << line.words;
  const bool failed = printed.is_object() && printed.size() == 1 && printed.contains("error");
  const ctl::Shape shape = failed ? ctl::shapeNamed("error") : ctl::parseShape(ctl::shapeOf(*row));
  EXPECT_EQ("", ctl::mismatch(shape, printed)) << line.place << ": " << line.words;
  if (failed) {
    EXPECT_EQ(line.status, printed["error"]["exit"]) << line.place;
  }
}

// A command that takes --comment has made a revision, or says that it had none to make. Some change nothing here.
std::string commented(const RunLine& line) {
  const ctl::Command* row = outermostRow(line.words);
  const bool asksElse = line.words.find("--") != std::string::npos;
  return line.words + (row && ctl::keepsRevision(*row) && line.status == 0 && !asksElse ? " --comment kept" : "");
}

bool changesNothing(const RunLine& line, const Json& printed) {
  const bool left = printed.is_object() && printed.value("done", "").find("left as it is") != std::string::npos;
  return (left && commented(line) != line.words) || line.words == "state load";
}

void runAndCompare(const RunLine& line) {
  if (line.prepares) {
    EXPECT_EQ(0, run(line.words).status) << line.place;
    return;
  }
  const bool traced = line.words.starts_with("explain");
  const Ran ran = traced ? tracedCtl("--json " + line.words) : ctl("--json " + commented(line), line.input);
  EXPECT_EQ(line.status, ran.status) << line.place << ": " << line.words << "\n" << ran.out << ran.err;
  const Json whole = ran.json();
  EXPECT_EQ(changesNothing(line, whole), ran.err.find("nothing was changed: ") != std::string::npos)
      << line.place << ": " << line.words << ": " << ran.err;
  if (!whole.is_discarded()) return compare(line, whole);
  std::istringstream lines(ran.out);
  for (std::string one; std::getline(lines, one);) {
    const Json printed = Json::parse(one, nullptr, false);
    ASSERT_FALSE(printed.is_discarded()) << line.place << ": no JSON: " << one;
    compare(line, printed);
  }
}

TEST_P(CtlJsonTest, EveryCommandPrintsItsShape) {
  for (const RunLine& line : linesOf(std::string(KESTROVE_RUNS) + "/" + GetParam() + ".runs")) runAndCompare(line);
}

// The list that a program reads as records.
bool isList(const ctl::Command* row) {
  return row && !row->changes && std::string_view(ctl::shapeOf(*row)).starts_with("[");
}

size_t linesIn(const std::string& text) { return static_cast<size_t>(std::count(text.begin(), text.end(), '\n')); }

TEST_P(CtlJsonTest, EveryListIsARecordALineForScripts) {
  for (const RunLine& line : linesOf(std::string(KESTROVE_RUNS) + "/" + GetParam() + ".runs")) {
    if (line.prepares) run(line.words);
    const ctl::Command* row = line.prepares ? nullptr : outermostRow(line.words);
    if (!isList(row)) continue;
    const std::string field = ctl::fieldsIn(ctl::parseShape(ctl::shapeOf(*row))).front();
    const Json records = ctl("--json " + line.words).json();
    if (!records.is_array()) continue;
    const Ran terse = ctl("--terse --fields " + field + " " + line.words);
    EXPECT_EQ(line.status, terse.status) << line.place << ": " << terse.err;
    EXPECT_EQ(records.size(), linesIn(terse.out)) << line.place << ": " << line.words << "\n" << terse.out;
    const Ran whole = ctl("--terse " + line.words);
    EXPECT_EQ(records.size(), linesIn(whole.out)) << line.place << ": " << whole.out;
    const Ran table = ctl("--fields " + field + " " + line.words);
    EXPECT_EQ(line.status, table.status) << line.place << ": " << table.err;
    EXPECT_EQ(2, ctl("--fields nosuchfield " + line.words).status) << line.place;
  }
}

std::vector<std::string> familyNames() {
  std::vector<std::string> names;
  for (const auto& path : runFiles()) names.push_back(path.stem());
  return names;
}

INSTANTIATE_TEST_SUITE_P(Families, CtlJsonTest, ::testing::ValuesIn(familyNames()),
                         [](const auto& one) { return one.param; });

TEST(CtlJson, EveryCommandIsRun) {
  std::set<std::vector<std::string>> known;
  for (const auto& path : runFiles()) {
    for (const RunLine& line : linesOf(path)) {
      const ctl::Command* row = line.prepares ? nullptr : outermostRow(line.words);
      if (row) known.insert(row->words);
    }
  }
  for (const ctl::Command& row : ctl::grammar()) {
    if (row.hidden || !row.run) continue;
    EXPECT_TRUE(known.contains(row.words)) << "no line of tests/tools/json/*.runs runs " << ctl::syntaxOf(row);
  }
}

TEST(CtlJson, EveryCommandHasAShape) {
  for (const ctl::Command& row : ctl::grammar()) {
    if (row.hidden || !row.run) continue;
    EXPECT_STRNE("", ctl::shapeOf(row)) << ctl::syntaxOf(row) << ": say .gives(...) in its row";
    EXPECT_NO_THROW(ctl::parseShape(ctl::shapeOf(row))) << ctl::syntaxOf(row);
  }
}

TEST(CtlJson, EveryWrongLineIsAnError) {
  for (const ctl::Command& row : ctl::grammar()) {
    if (row.hidden || !row.run) continue;
    const Ran ran = ctl(ctl::joined(row.words, " ") + " --no-such-option --json");
    if (!row.values.empty() && row.values.back().type.form == ctl::Form::kCommandLine) continue;
    EXPECT_EQ(2, ran.status) << ctl::syntaxOf(row);
    EXPECT_EQ("", ctl::mismatch(ctl::shapeNamed("error"), ran.json())) << ctl::syntaxOf(row);
  }
}

}  // namespace
}  // namespace kestrove::testing
