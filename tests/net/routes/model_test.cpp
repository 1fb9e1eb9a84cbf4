// SPDX-License-Identifier: Apache-2.0
// Both route tables against a model, in the hands of one process and of two, and with damaged chains.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "tests/net/routes/routes_fixture.h"

namespace kestrove::testing {
namespace {

constexpr int kOperations = 100000;
constexpr uint32_t kRanks = 1400;  // more than there are slots, so that the table fills up at times

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  uint32_t operator()() { return static_cast<uint32_t>(engine_()); }
  uint32_t below(uint32_t end) { return (*this)() % end; }

 private:
  std::mt19937 engine_;
};

struct Step {
  enum Kind { kGet, kNext, kReplace, kRemove, kAdd } kind;
  uint32_t rank;
  uint32_t other;
};

// Mostly additions or mostly removals, with all else between them.
Step draw(Random& random, bool grow) {
  const Step::Kind kinds[] = {Step::kGet, Step::kNext, Step::kReplace, Step::kRemove};
  uint32_t choice = random.below(8);
  Step::Kind usual = grow ? Step::kAdd : Step::kRemove;
  return {choice < 4 ? kinds[choice] : usual, random.below(kRanks), random.below(kRanks)};
}

// Which slot each rank is in, and which are free.
class Model {
 public:
  Model() {
    for (uint32_t slot = 0; slot < SHM_ROUTES; ++slot) free_.insert(slot);
  }
  int add(uint32_t rank) {
    if (free_.empty()) return SHM_EFULL;
    if (taken_.count(rank)) return SHM_EEXIST;
    taken_[rank] = *free_.begin();
    free_.erase(free_.begin());
    return SHM_OK;
  }
  int remove(uint32_t rank) {
    auto place = taken_.find(rank);
    if (place == taken_.end()) return SHM_ENOENT;
    free_.insert(place->second);
    taken_.erase(place);
    return SHM_OK;
  }
  int replace(uint32_t oldRank, uint32_t rank) {
    int result = remove(oldRank);
    return result == SHM_OK ? add(rank) : result;
  }
  // The successor of the first at or after the rank, -1 at the end.
  int next(uint32_t rank) const {
    auto place = taken_.lower_bound(rank);
    if (place == taken_.end() || ++place == taken_.end()) return -1;
    return static_cast<int>(place->first);
  }
  bool has(uint32_t rank) const { return taken_.count(rank) != 0; }
  size_t size() const { return taken_.size(); }
  const std::map<uint32_t, uint32_t>& slots() const { return taken_; }

 private:
  std::map<uint32_t, uint32_t> taken_;
  std::set<uint32_t> free_;
};

template <typename Family>
class RouteModel : public StoreTest {
 public:
  using Record = typename Family::Record;

  // In Debug Mode the kernel stays out of it; a save that cannot open its file costs little.
  void SetUp() override {
    StoreTest::SetUp();
    shm->operationalState = SHM_STATE_DEBUG;
    strcpy(shm->config.configFileName, "/no/such/folder/file");
  }

  static int code(int result) {
    if (result == 0) return SHM_OK;
    return static_cast<int>(shm_errno);
  }
  static int add(uint32_t rank) {
    Record route = Family::route(rank);
    return code(Family::add(&route));
  }
  static int remove(uint32_t rank) { return code(Family::remove(Family::route(rank))); }
  static int replace(uint32_t oldRank, uint32_t rank) {
    Record route = Family::route(rank);
    return code(Family::replace(Family::route(oldRank), &route));
  }
  static int next(uint32_t rank) {
    Record out;
    return Family::next(Family::route(rank), &out) == 0 ? static_cast<int>(Family::rank(out)) : -1;
  }
  static bool has(uint32_t rank) {
    Record out;
    return Family::get(Family::route(rank), &out) == 0 && Family::rank(out) == rank;
  }

  // Every slot and every link, straight from the store.
  static void expectEqual(const Model& model) {
    uint32_t slot = Family::head();
    for (const auto& [rank, place] : model.slots()) {
      ASSERT_EQ(place, slot);
      ASSERT_EQ(1u, Family::slots()[slot].inUse);
      ASSERT_EQ(rank, Family::rank(Family::slots()[slot]));
      slot = Family::slots()[slot].next;
    }
    if (model.size() != 0) {
      ASSERT_EQ(SHM_NO_SLOT, slot);
    }
    size_t used = 0;
    for (uint32_t i = 0; i < SHM_ROUTES; ++i) used += Family::slots()[i].inUse != SHM_NO_SLOT;
    ASSERT_EQ(model.size(), used);
  }

  template <typename Table>
  static int apply(const Step& step, Table& table) {
    switch (step.kind) {
      case Step::kGet: return table.has(step.rank);
      case Step::kNext: return table.next(step.rank);
      case Step::kReplace: return table.replace(step.rank, step.other);
      case Step::kRemove: return table.remove(step.rank);
      case Step::kAdd: return table.add(step.rank);
    }
    return -1;
  }
};

using Families = ::testing::Types<Family4, Family6>;
TYPED_TEST_SUITE(RouteModel, Families);

TYPED_TEST(RouteModel, ManyRandomOperationsAgree) {
  Random random(20240117);
  Model model;
  bool grow = true;
  for (int i = 0; i < kOperations && !this->HasFatalFailure(); ++i) {
    Step step = draw(random, grow);
    ASSERT_EQ(this->apply(step, model), this->apply(step, *this)) << "operation " << i;
    if (model.size() == 0) grow = true;
    if (model.size() == SHM_ROUTES && random.below(64) == 0) grow = false;
    if (i % 1000 == 0) this->expectEqual(model);
  }
  this->expectEqual(model);
}

// Two processes take turns, so that what one remembers of the list is old each time. Both draw the same numbers and
// keep the same model; each carries out every second turn.
TYPED_TEST(RouteModel, TwoProcessesInTurnAgree) {
  constexpr int kTurns = 60;
  constexpr int kStepsOfATurn = 50;
  Random random(7);
  Model model;
  for (uint32_t rank = 0; rank < 400; ++rank) ASSERT_EQ(model.add(3 * rank), this->add(3 * rank));
  int toChild[2], toParent[2];
  ASSERT_EQ(0, pipe(toChild));
  ASSERT_EQ(0, pipe(toParent));
  pid_t child = fork();
  const int hear = child == 0 ? toChild[0] : toParent[0];
  const int tell = child == 0 ? toParent[1] : toChild[1];
  char word = 'x';
  for (int turn = 0; turn < kTurns && !this->HasFailure(); ++turn) {
    const bool mine = (turn % 2 == 0) == (child != 0);
    if (!mine) {
      EXPECT_EQ(1, read(hear, &word, 1)) << "the other process gave up";
    }
    for (int i = 0; i < kStepsOfATurn; ++i) {
      Step step = draw(random, turn % 8 < 5);
      int expected = this->apply(step, model);
      if (mine) {
        EXPECT_EQ(expected, this->apply(step, *this));
      }
    }
    if (!mine) continue;
    this->expectEqual(model);
    EXPECT_EQ(1, write(tell, &word, 1));
  }
  if (child == 0) _exit(this->HasFailure() ? 1 : 0);
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
}

// Links, heads, marks and keys of any kind: every operation ends, within the table.
TYPED_TEST(RouteModel, DamagedTablesEndEveryOperation) {
  Random random(99);
  const auto guard = std::make_pair(shm->reserved11[0], shm->reserved8[0]);
  const auto link = [&]() -> uint32_t {
    switch (random.below(4)) {
      case 0: return random();
      case 1: return SHM_NO_SLOT;
      default: return random.below(SHM_ROUTES);
    }
  };
  for (int round = 0; round < 300; ++round) {
    for (uint32_t i = 0; i < SHM_ROUTES; ++i) {
      typename TypeParam::Record& slot = TypeParam::slots()[i];
      slot = TypeParam::route(random.below(50));
      slot.inUse = random.below(8) ? 1 : (random.below(2) ? SHM_NO_SLOT : random());
      slot.next = link();
    }
    TypeParam::head() = link();
    for (uint32_t rank = 0; rank < 50; rank += 7) {
      this->add(rank);
      this->next(rank);
      this->has(rank);
      this->replace(rank, rank + 1);
      this->remove(rank);
    }
    TypeParam::freshen();
    EXPECT_LE(walk<TypeParam>().size(), size_t{SHM_ROUTES} + 1);
    ASSERT_EQ(0, shm_lock_count);
  }
  EXPECT_EQ(guard, std::make_pair(shm->reserved11[0], shm->reserved8[0]));
}

TYPED_TEST(RouteModel, ALoopEndsEveryWalk) {
  for (uint32_t rank : {0u, 1u, 2u}) this->add(rank);
  for (uint32_t target : {0u, 1u, 2u}) {
    TypeParam::slots()[2].next = target;
    EXPECT_FALSE(this->has(3));
    EXPECT_EQ(SHM_ENOENT, this->remove(3));
    EXPECT_EQ(SHM_ESYSTEM, this->add(3));
    EXPECT_EQ(static_cast<int>(target), this->next(2));
  }
  EXPECT_EQ(0, TypeParam::freshen());
}

TYPED_TEST(RouteModel, ALinkOutOfTheTableEndsEveryWalk) {
  for (uint32_t rank : {0u, 1u, 2u}) this->add(rank);
  TypeParam::slots()[1].next = SHM_ROUTES;
  EXPECT_THAT(walk<TypeParam>(), ::testing::ElementsAre(0, 1));
  EXPECT_FALSE(this->has(2));
  EXPECT_EQ(SHM_ENOENT, this->remove(2));
  EXPECT_EQ(-1, this->next(1));
}

TYPED_TEST(RouteModel, ASharedLinkSkipsWhatItPasses) {
  for (uint32_t rank : {0u, 1u, 2u, 3u}) this->add(rank);
  TypeParam::slots()[0].next = 3;
  TypeParam::slots()[2].next = 3;
  EXPECT_THAT(walk<TypeParam>(), ::testing::ElementsAre(0, 3));
  EXPECT_FALSE(this->has(1));
  EXPECT_EQ(SHM_OK, this->remove(3));
  EXPECT_THAT(walk<TypeParam>(), ::testing::ElementsAre(0));
}

}  // namespace
}  // namespace kestrove::testing
