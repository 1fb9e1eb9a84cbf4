// SPDX-License-Identifier: Apache-2.0
// kestrovectl killed in front of each of its system calls: the settings before, those after, or a journal with which
// the next command ends the change and says so.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/support/fault.h"
#include "tests/tools/programs.h"
#include "tools/ctl/command_line.h"

namespace kestrove::testing {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;

constexpr char kJournal[] = "/var/lib/kestrove/journal";
constexpr uint32_t kOld = 2048000;
constexpr uint32_t kNew = 3072000;

// A command in this process, so that its calls can be counted.
int command(std::vector<std::string> words) {
  ctl::Session session;
  session.words = words;
  session.out = fopen("/dev/null", "we");
  CLI::App app;
  app.fallthrough();
  ctl::addSharedOptions(app, session);
  ctl::addCommands(app, session, ctl::grammar());
  std::reverse(words.begin(), words.end());
  int status = ctl::kDone;
  try {
    app.parse(words);
  } catch (const ctl::Refusal& refusal) {
    status = refusal.exit();
  } catch (const CLI::ParseError&) {
    status = ctl::kUsage;
  }
  fclose(session.out);
  return status;
}

uint32_t rate() { return shm->config.wanLinkRate; }

class HistoryCrashTest : public StoreTest {
 protected:
  // The rate and the route go together: half of a change would show.
  static void expectWhole() {
    const bool route = shm->routes.slot[0].inUse == 1;
    EXPECT_EQ(rate() == kNew, route) << "half of it";
    EXPECT_THAT(rate(), AnyOf(kOld, kNew));
    EXPECT_EQ(uint32_t{SHM_STATE_OPERATIONAL}, shm->operationalState);
    EXPECT_THAT(readFile("/etc/config/kestrove.conf"),
                HasSubstr("INTERNET_RATE             " + std::to_string(rate())));
  }
  // The next command ends what was begun.
  static Ran next() {
    Ran ran = ctl("show wanLinkRate");
    EXPECT_EQ(0, ran.status) << ran.err;
    EXPECT_FALSE(fileExists(kJournal));
    return ran;
  }
  // The store of a revision, with the history that was kept.
  static void goBackTo(const char* revision) {
    command({"rollback", revision});
    run("rm -rf /var/lib/kestrove; cp -r /tmp/kept /var/lib/kestrove");
  }
};

TEST_F(HistoryCrashTest, ARollbackKilledAnywhereIsWhole) {
  ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(kNew)).status);
  ASSERT_EQ(0, ctl("route add 172.20.0.0/16 192.168.10.3 --disabled").status);  // 3
  ASSERT_EQ(0, ctl("route remove 172.20.0.0/16").status);
  ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(kOld)).status);  // 5
  ASSERT_EQ(0, run("cp -r /var/lib/kestrove /tmp/kept").status);
  int ended = 0;
  int struck = 0;
  sweepFaults(
      {kKilled}, [] { goBackTo("5"); },
      [] {
        return command({"rollback", "3"});
      },
      [&](const Strike&, const Aftermath&) {
        ++struck;
        const bool begun = fileExists(kJournal);
        const Ran ran = next();
        expectWhole();
        if (!begun) return;
        ++ended;
        EXPECT_EQ(kNew, rate());
        EXPECT_THAT(ran.err, HasSubstr("'rollback 3' of"));
      });
  EXPECT_GT(ended, 0);
  EXPECT_GT(struck, ended);
}

// Some hundred calls before the journal, on the copy that the script is tried on, and as many behind it.
TEST_F(HistoryCrashTest, AnApplyKilledAnywhereIsWhole) {
  static constexpr char kScript[] = "/tmp/script";
  writeFile(kScript, "set wanLinkRate 3072000\nroute add 172.20.0.0/16 192.168.10.3 --disabled\n");
  ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(kOld)).status);  // 2
  ASSERT_EQ(0, run("cp -r /var/lib/kestrove /tmp/kept").status);
  int ended = 0;
  int struck = 0;
  sweepFaults(
      {kKilled}, [] { goBackTo("2"); },
      [] {
        return command({"apply", kScript});
      },
      [&](const Strike&, const Aftermath&) {
        ++struck;
        const bool begun = fileExists(kJournal);
        const Ran ran = next();
        expectWhole();
        if (!begun) return;
        ++ended;
        EXPECT_EQ(kNew, rate());
        EXPECT_THAT(ran.err, HasSubstr("'apply /tmp/script' of"));
      },
      crashStride(11));
  printf("%d kills, %d of them with a journal\n", struck, ended);
  EXPECT_GT(ended, 0);
  EXPECT_GT(struck, ended);
}

TEST_F(HistoryCrashTest, AChangeToBeConfirmedKilledAnywhereIsBackOrWaits) {
  ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(kOld)).status);
  sweepFaults(
      {kKilled},
      [] {
        command({"set", "wanLinkRate", std::to_string(kOld)});
      },
      [] {
        return command({"set", "wanLinkRate", std::to_string(kNew), "--confirm", "60"});
      },
      [](const Strike&, const Aftermath&) {
        // By now the watcher may be at it: whoever has the lock takes it back, and the other finds that done.
        EXPECT_THAT(command({"confirm", "--abort"}), AnyOf(ctl::kDone, ctl::kRefused, ctl::kUnconfirmed));
        EXPECT_EQ(kOld, rate());
        EXPECT_FALSE(fileExists(kJournal));
      });
}

TEST_F(HistoryCrashTest, AConfirmationKilledAnywhereIsGivenOrStillWaits) {
  ASSERT_EQ(0, ctl("set wanLinkRate " + std::to_string(kOld)).status);
  sweepFaults(
      {kKilled},
      [] {
        command({"set", "wanLinkRate", std::to_string(kOld)});
        command({"set", "wanLinkRate", std::to_string(kNew), "--confirm", "60"});
      },
      [] { return command({"confirm"}); },
      [](const Strike&, const Aftermath&) {
        const bool waits = fileExists(kJournal);
        EXPECT_EQ(kNew, rate());
        EXPECT_EQ(waits ? 0 : 1, command({"confirm", "--abort"}));
        EXPECT_EQ(waits ? kOld : kNew, rate());
        EXPECT_FALSE(fileExists(kJournal));
      });
}

}  // namespace
}  // namespace kestrove::testing
