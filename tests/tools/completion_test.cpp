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

#ifdef KESTROVE_ZSH
// What zsh proposes for these words, the last of which is unfinished.
std::string proposedInZsh(const std::string& words) {
  const Ran ran =
      run(KESTROVE_ZSH
          " -fc 'compdef() {}; compadd() { print -rl -- \"${@:4}\"; }; _files() { print files; }\n"
          "source <(\"$1\" completion zsh); words=(\"$@\") CURRENT=$# PREFIX=$@[-1]; _kestrovectl' - " KESTROVECTL " " +
          words);
  EXPECT_EQ(0, ran.status) << ran.err;
  return ran.out;
}

TEST_F(CompletionTest, ZshKnowsTheSameWords) {
  EXPECT_EQ("rule\n", proposedInZsh("rul"));
  EXPECT_EQ("list\nadd\nchange\nmove\ndelete\n", proposedInZsh("rule ''"));
  EXPECT_EQ("on\noff\n", proposedInZsh("set compression ''"));
  EXPECT_EQ("accelerate\n", proposedInZsh("--json rule add 0 --target a"));
  EXPECT_EQ("files\n", proposedInZsh("load /etc/passw"));
  EXPECT_EQ("\n", proposedInZsh("rule delete x"));
  const Ip6Address own = {.address = {0xfd, 0, 0, 0x10}, .prefixLength = 64};
  shm->ip6Address[0] = own;
  shm->ip6Count = 1;
  EXPECT_EQ("fd00:10::/64\n", proposedInZsh("address remove fd00:"));
}

// The script as it is installed, too, by which zsh makes the function at its first use.
TEST_F(CompletionTest, ZshFillsInWhatIsTyped) {
  for (const char* take : {"source <(kestrovectl completion zsh)", "fpath=(/tmp/zsh $fpath); compinit -D -u"}) {
    writeFile("/tmp/type", std::string("zmodload zsh/zpty; path=(${1:h} $path); mkdir -p /tmp/zsh\n"
                                       "kestrovectl completion zsh >/tmp/zsh/_kestrovectl\n"
                                       "zpty it \"TERM=dumb zsh -f -i\"\n"
                                       "zpty -w it 'autoload -Uz compinit && compinit -D -u; ") +
                               take +
                               "; print rea\"\"dy'\n"
                               "zpty -r -m it said '*ready*'; zpty -n -w it $'kestrovectl rul\\tl\\t'\n"
                               "zpty -r -m it said '*kestrovectl rule *list *'; print filled in\n");
    const Ran ran = run(KESTROVE_ZSH " -f /tmp/type " KESTROVECTL);
    EXPECT_EQ("filled in\n", ran.out) << take << ran.err;
  }
}
#endif

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
