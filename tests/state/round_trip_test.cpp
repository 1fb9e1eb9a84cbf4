// SPDX-License-Identifier: Apache-2.0
// Random stores, saved as archives, lost and brought back.

#include <memory>

#include "tests/state/state_fixture.h"
#include "tests/support/random_store.h"
#include "tests/support/thinning.h"

namespace kestrove::testing {
namespace {

constexpr unsigned kSeeds = 1000;
constexpr unsigned kShares = 4;  // that several processors can work at

class StateRoundTripTest : public StateTest, public ::testing::WithParamInterface<unsigned> {};

TEST_P(StateRoundTripTest, RandomStoresComeBackFromTheirArchives) {
  auto saved = std::make_unique<ShmData>();
  ::testing::internal::CaptureStdout();  // IPv6 rules are announced there
  for (unsigned seed = GetParam(); seed < kSeeds && !HasFailure(); seed += kShares * kThinning) {
    SCOPED_TRACE(seed);
    drawStore(seed);
    EXPECT_EQ(0, write_shared_memory());
    EXPECT_EQ(0, saveSystemState(0, "--"));
    memcpy(saved.get(), shm, sizeof *shm);
    unlink(kConfigFile);
    makeFreshStore();
    EXPECT_EQ(0, loadSystemState(0, "--"));
    EXPECT_EQ(0, load_shared_memory(kConfigFile));
    expectSameStore(*saved);
  }
  ::testing::internal::GetCapturedStdout();
}
INSTANTIATE_TEST_SUITE_P(Share, StateRoundTripTest, ::testing::Range(0u, kShares));

}  // namespace
}  // namespace kestrove::testing
