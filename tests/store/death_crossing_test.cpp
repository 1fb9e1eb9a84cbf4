// SPDX-License-Identifier: Apache-2.0
// Real deaths: the process is killed, and another one takes the lock.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include "store/accounts.h"
#include "store/journal.h"
#include "store/lock.h"
#include "tests/store/death_fixture.h"
#include "tests/support/peer.h"
#include "tools/ctl/check.h"

namespace kestrove::testing {
namespace {

FilterRule newRule = ruleNamed(9);

struct Deadly {
  const char* name;
  int (*operation)();
};

void PrintTo(const Deadly& deadly, std::ostream* out) { *out << deadly.name; }

const Deadly kOperations[] = {
    {"Insert", [] { return insertRule(2, &newRule); }},
    {"Delete", [] { return deleteRule(1); }},
    {"MoveUp", [] { return moveRule(0, 3); }},
    {"MoveDown", [] { return moveRule(2, 0); }},
    {"AddUser",
     [] {
       StoreLock lock;  // without the look into the password file, which takes long
       appendAccount(userNamed("newcomer", 1));
       return 0;
     }},
    {"RemoveAddress",
     [] {
       ManagementAddress address = managementNamed(20);
       return removeManagementAddr(&address);
     }},
    {"AddRoute",
     [] {
       RouteEntry route = routeNamed(10);
       return addUserRoute(&route);
     }},
    {"RemoveUser",
     [] {
       StoreLock lock;
       dropAccount(0);
       return 0;
     }},
    {"WipeEvents", [] { return wipeEventLog(); }},
};

class RealDeathTest : public DeathTest, public ::testing::WithParamInterface<Deadly> {
 protected:
  void SetUp() override {
    DeathTest::SetUp();
    start_ = std::make_unique<ShmData>(*shm);
    before_ = std::make_unique<Tables>(*shm);
    ASSERT_EQ(0, inOtherProcess([] { return GetParam().operation(); }));
    after_ = std::make_unique<Tables>(*shm);
  }

  // Kills the operation at each instant in turn, or at every so many, and lets somebody look at what it left.
  void atEachInstant(const std::function<void()>& look, int step = 1) {
    int instant = 1;
    while (dieAt(instant) && !HasFailure()) {
      SCOPED_TRACE("instant " + std::to_string(instant));
      look();
      instant += step;
    }
    EXPECT_GT(instant, 2) << "nothing to die in";
  }

  bool sound(const Tables& tables) const { return tables == *before_ || tables == *after_; }

  // What the next holder finds.
  void expectSoundTables(const ShmData& store) {
    for (const ctl::Finding& finding : ctl::checkStore(store)) ADD_FAILURE() << finding.table << ": " << finding.text;
    EXPECT_TRUE(sound(Tables(store))) << "something in between";
    EXPECT_EQ(Outcome::kNothing, finishWork(*shm));
  }

 private:
  bool dieAt(int instant) {
    *shm = *start_;
    return DeathProof([] { GetParam().operation(); }).dieAt(instant);
  }

  std::unique_ptr<ShmData> start_;
  std::unique_ptr<Tables> before_;
  std::unique_ptr<Tables> after_;
};

TEST_P(RealDeathTest, AnotherProcessFindsSoundTables) {
  atEachInstant([this] {
    EXPECT_EQ(0, inOtherProcess([] { return shm_lock() != 0 || shm_unlock() != 0; }));
    expectSoundTables(*shm);
  });
}

// The one who puts right dies over it, at any instant of that.
TEST_P(RealDeathTest, ADeathInTheRepairIsMadeGoodToo) {
  atEachInstant(
      [this] {
        auto tell = [this](const Tables& tables) { return sound(tables); };
        Proof proof = DeathProof([] { static_cast<void>(finishWork(*shm)); }, {}, tell).run();
        for (const std::string& fault : proof.faults) ADD_FAILURE() << fault;
        expectSoundTables(*shm);
      },
      4);
}

#ifdef KESTROVE_OTHER_HOLDER
TEST_P(RealDeathTest, AProcessOfTheOtherWidthFindsSoundTables) {
  atEachInstant(
      [this] {
        EXPECT_EQ(0, system(KESTROVE_OTHER_HOLDER));
        expectSoundTables(*shm);
      },
      4);
}
#endif

INSTANTIATE_TEST_SUITE_P(Operation, RealDeathTest, ::testing::ValuesIn(kOperations),
                         [](const auto& parameter) { return parameter.param.name; });

}  // namespace
}  // namespace kestrove::testing
