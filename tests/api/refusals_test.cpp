// SPDX-License-Identifier: Apache-2.0
// Every refusal of an item reaches the client as kestrovectl prints it: cases from the table of items.
#include <arpa/inet.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <set>

#include "tests/api/api_fixture.h"
#include "tools/api/carry_out.h"
#include "tools/ctl/item_names.h"
#include "tools/ctl/script/run_line.h"
#include "tools/ctl/values.h"

namespace kestrove::testing {
namespace {

class RefusalsTest : public ApiTest {};

// Beside what an item accepts: too little, too much, another word, and for what cannot be set anything.
std::vector<std::string> values() {
  std::vector<std::string> made = {"perhaps", "256.1.2.3", "255.0.255.0", std::string(300, 'x')};
  for (const char* number : {"-99999999999", "-1", "0", "2", "3", "9", "16", "256", "99999999999"})
    made.push_back(number);
  made.push_back(std::to_string(std::numeric_limits<int32_t>::max()));
  made.push_back(std::to_string(std::numeric_limits<uint32_t>::max()));
  return made;
}

// As the library takes it; nothing for another word.
std::optional<uint32_t> wordOf(const ctl::ItemRow& row, const std::string& value) {
  struct in_addr address;
  if (row.form == ctl::ItemForm::kAddress && inet_pton(AF_INET, value.c_str(), &address) == 1) return address.s_addr;
  const std::optional<uint64_t> number = ctl::readDigits(value);
  if (row.form == ctl::ItemForm::kAddress || !number || *number > std::numeric_limits<uint32_t>::max()) return {};
  return static_cast<uint32_t>(*number);
}

int setByLibrary(const ctl::ItemRow& row, const std::string& value, uint32_t word) {
  switch (row.family) {
    case ctl::ItemFamily::kText: return setShmString(row.id, value.c_str());
    case ctl::ItemFamily::kConfig: return setKestroveConfigItem(row.id, word, SHM_SOURCE_HTTP, "alice");
    case ctl::ItemFamily::kNetwork: return setNetworkConfigItem(row.id, &word, SHM_SOURCE_HTTP, "alice");
  }
  return 0;
}

// By which the library itself refuses the value; nothing where it takes it, or where it is none that it could be asked.
std::optional<uint32_t> libraryCode(const ctl::ItemRow& row, const std::string& value) {
  const bool text = row.family == ctl::ItemFamily::kText;
  const std::optional<uint32_t> word = wordOf(row, value);
  if (!text && !word) return std::nullopt;
  shm_errno = SHM_OK;
  if (setByLibrary(row, value, word.value_or(0)) == 0) return std::nullopt;
  return shm_errno;
}

// What kestrovectl would print, on the same store, and how it would end.
std::pair<int, Json> byCommand(const std::string& item, const std::string& value) {
  char* text = nullptr;
  size_t length = 0;
  ctl::Session session;
  session.json = true;
  session.out = open_memstream(&text, &length);
  const int exit = ctl::runWords(session, {"set", item, value});
  fclose(session.out);
  const Json printed = Json::parse(std::string(text, length), nullptr, false);
  free(text);
  return {exit, printed};
}

// As kestrovectl prints it. Gives the code, where there is one.
std::optional<uint32_t> codeOf(const std::string& item, const std::string& value, const api::Reply& reply) {
  const auto [exit, printed] = byCommand(item, value);
  const Json said = jsonOf(reply);
  EXPECT_EQ(printed, said);
  EXPECT_EQ(exit == ctl::kRefused ? 422 : 400, reply.status) << reply.body;
  EXPECT_TRUE(reply.status == 400 || said["error"].contains("code")) << reply.body;
  return said["error"].contains("code") ? std::optional(said["error"].value("code", 0u)) : std::nullopt;
}

// Those that a request has to be told, of those by which the library refuses. The words of a switch are refused in
// front of it, and what nobody may set is told as that.
std::set<uint32_t> codesToTell(const ctl::ItemRow& row, const std::set<uint32_t>& ofTheLibrary) {
  if (!*row.range) return {SHM_EREADONLY};
  return row.form == ctl::ItemForm::kSwitch ? std::set<uint32_t>() : ofTheLibrary;
}

TEST_F(RefusalsTest, EveryRefusalOfAnItemKeepsItsCodeAndItsWords) {
  const Browser alice = browserOf("alice");
  shm->operationalState = SHM_STATE_CONFIGURATION;  // nothing is applied to the kernel of whatever is taken
  for (const ctl::ItemRow& row : ctl::itemRows()) {
    std::set<uint32_t> ofTheLibrary;
    std::set<uint32_t> said;
    int refused = 0;
    for (const std::string& value : values()) {
      SCOPED_TRACE(std::string(row.name) + " " + value);
      if (const auto code = libraryCode(row, value)) ofTheLibrary.insert(*code);
      shm->config.httpOperState = SHM_ON;
      const api::Reply reply = ask(alice, "PUT", "/items/" + std::string(row.name), {{"value", value}});
      shm->config.httpOperState = SHM_ON;
      if (reply.status < 300) continue;
      ++refused;
      if (const auto code = codeOf(row.name, value, reply)) said.insert(*code);
    }
    EXPECT_GT(refused, 0) << row.name;
    EXPECT_TRUE(std::ranges::includes(said, codesToTell(row, ofTheLibrary)))
        << row.name << ": " << ::testing::PrintToString(said);
  }
}

}  // namespace
}  // namespace kestrove::testing
