// SPDX-License-Identifier: Apache-2.0
// Completion in bash, by a real one.
#include <gmock/gmock.h>

#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class CompletionTest : public StoreTest {
 protected:
  // What bash proposes at the end of a line, whose last word it has cut as it does, at a colon.
  static std::string proposed(const std::string& line, const std::string& word) {
    writeFile("/tmp/complete", "PATH=${0%/*}:$PATH\nsource <(\"$0\" completion bash)\nCOMP_LINE='kestrovectl " + line +
                                   "'\nCOMP_POINT=${#COMP_LINE}\n"
                                   "_kestrovectl \"$0\" '" +
                                   word + "' ''\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n");
    const Ran ran = run("bash -c 'source /tmp/complete' " KESTROVECTL);
    EXPECT_EQ(0, ran.status) << ran.err;
    return ran.out;
  }
};

TEST_F(CompletionTest, BashTakesTheScript) {
  const Ran ran = run("bash -c 'source <(" KESTROVECTL " completion bash) && complete -p kestrovectl'");
  EXPECT_EQ(0, ran.status) << ran.err;
  EXPECT_EQ("complete -o nosort -F _kestrovectl kestrovectl\n", ran.out);
}

TEST_F(CompletionTest, WordsAndValuesAreKnown) {
  ASSERT_EQ(0, ctl("user add alice", "Passw0rd!\n").status);
  EXPECT_EQ("rule\n", proposed("rul", "rul"));
  EXPECT_EQ("list\nadd\nchange\nmove\ndelete\n", proposed("rule ", ""));
  EXPECT_EQ("wanLinkRate\n", proposed("set wanLinkR", "wanLinkR"));
  EXPECT_EQ("on\noff\n", proposed("set compression ", ""));
  EXPECT_EQ("alice\n", proposed("user remove a", "a"));
  EXPECT_EQ("0\n", proposed("rule delete ", ""));
  EXPECT_EQ("--target\n", proposed("rule add 0 --ta", "--ta"));
  EXPECT_EQ("accelerate\n", proposed("--json rule add 0 --target a", "a"));
  EXPECT_THAT(proposed("explain ", ""), HasSubstr("route6\n"));
  EXPECT_THAT(proposed("", ""), Not(HasSubstr("complete-line")));
}

TEST_F(CompletionTest, FilesAreThoseOfTheMachine) {
  EXPECT_THAT(proposed("load /etc/passw", "/etc/passw"), HasSubstr("/etc/passwd\n"));
}

TEST_F(CompletionTest, AColonEndsAWordInBash) {
  Ip6Address own = {.address = {0xfd, 0, 0, 0x10}, .prefixLength = 64};
  shm->ip6Address[0] = own;
  shm->ip6Count = 1;
  EXPECT_EQ("10::/64\n", proposed("address remove fd00:", "").substr(0, 8));
}

TEST_F(CompletionTest, WithoutAStoreThereAreStillWords) {
  dropStore();
  EXPECT_EQ("list\nadd\nchange\nmove\ndelete\n", proposed("rule ", ""));
  EXPECT_EQ("\n", proposed("rule delete ", ""));
  makeStore();
}

TEST_F(CompletionTest, FullTablesAreListedWhileAnotherHasTheLock) {
  for (int i = 0; i < SHM_RULES; ++i) shm->filterTable.rule[i] = shm->filterTable.rule[0];
  shm->filterTable.ruleCount = SHM_RULES;
  shm_lock();
  const std::string all = proposed("rule delete ", "");
  shm_unlock();
  EXPECT_THAT(all, HasSubstr("\n8191\n"));
  EXPECT_EQ("819\n8190\n8191\n", proposed("rule delete 819", "819"));
}

}  // namespace
}  // namespace kestrove::testing
