// SPDX-License-Identifier: Apache-2.0
// Every refusal of an item reaches the client as kestrovectl prints it: cases from the table of items.
#include <cstdlib>

#include "tests/api/api_fixture.h"
#include "tools/api/carry_out.h"
#include "tools/ctl/item_names.h"
#include "tools/ctl/script/run_line.h"

namespace kestrove::testing {
namespace {

class RefusalsTest : public ApiTest {};

struct Case {
  std::string item;
  std::string value;
};

// Beside what each accepts: too little, too much, another word, and for what cannot be set anything.
std::vector<Case> cases() {
  std::vector<Case> made;
  for (const ctl::ItemRow& row : ctl::itemRows()) {
    const std::string name = row.name;
    for (const std::string& value : {std::string("99999999999"), std::string("-99999999999"), std::string("perhaps"),
                                     std::string("2"), std::string("256.1.2.3"), std::string(300, 'x')}) {
      made.push_back({name, value});
    }
  }
  return made;
}

// What kestrovectl would print, on the same store, and how it would end.
std::pair<int, Json> byCommand(const Case& one) {
  char* text = nullptr;
  size_t length = 0;
  ctl::Session session;
  session.json = true;
  session.out = open_memstream(&text, &length);
  const int exit = ctl::runWords(session, {"set", one.item, one.value});
  fclose(session.out);
  const Json printed = Json::parse(std::string(text, length), nullptr, false);
  free(text);
  return {exit, printed};
}

TEST_F(RefusalsTest, EveryRefusalOfAnItemKeepsItsCodeAndItsWords) {
  const Browser alice = browserOf("alice");
  shm->operationalState = SHM_STATE_CONFIGURATION;  // nothing is applied to the kernel of whatever is taken
  int refused = 0;
  for (const Case& one : cases()) {
    const api::Reply reply = ask(alice, "PUT", "/items/" + one.item, {{"value", one.value}});
    shm->config.httpOperState = SHM_ON;
    if (reply.status < 300) continue;
    const auto [exit, printed] = byCommand(one);
    EXPECT_EQ(printed, jsonOf(reply)) << one.item << " " << one.value;
    EXPECT_EQ(exit == ctl::kRefused ? 422 : 400, reply.status) << one.item << " " << one.value << reply.body;
    ++refused;
  }
  EXPECT_GT(refused, 200);
}

}  // namespace
}  // namespace kestrove::testing
