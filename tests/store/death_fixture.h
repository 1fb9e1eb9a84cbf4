// SPDX-License-Identifier: Apache-2.0
// Small tables, and an operation on them that dies at every instant.
#pragma once

#include <gtest/gtest.h>
#include <pwd.h>

#include <initializer_list>
#include <utility>

#include "tests/store/death_proof.h"
#include "tests/support/store.h"

namespace kestrove::testing {

using Numbers = std::initializer_list<uint8_t>;

class DeathTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    makeSmallTables();
    writeFile("/etc/nsswitch.conf", "passwd: files\n");
    getpwnam("no-one");  // what the C library loads once is no part of an operation
  }

  // The operation must give the result, and no death inside it may do harm.
  static Proof expectSound(const std::function<int()>& operation, int result = 0, std::vector<Stretch> stretches = {},
                           DeathProof::Tell between = nullptr) {
    auto work = [&] {
      if (operation() != result) abort();
    };
    Proof proof = DeathProof(work, std::move(stretches), std::move(between)).run();
    for (const std::string& fault : proof.faults) ADD_FAILURE() << fault;
    EXPECT_GT(proof.instants, 0) << "nothing changed";
    RecordProperty("instructions", std::to_string(proof.instructions));
    RecordProperty("instants", proof.instants);
    return proof;
  }

  // The proof finds something in what is done wrongly.
  static void expectFault(const std::function<void()>& operation, const std::string& text) {
    Proof proof = DeathProof(operation).run();
    ASSERT_FALSE(proof.faults.empty());
    for (const std::string& fault : proof.faults) {
      if (fault.find(text) != fault.npos) return;
    }
    ADD_FAILURE() << proof.faults[0];
  }
};

}  // namespace kestrove::testing
