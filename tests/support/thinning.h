// SPDX-License-Identifier: Apache-2.0
// How many cases of a long test run in this build.
#pragma once

namespace kestrove::testing {

// A test that mostly waits for programs into which no sanitizer looks runs one of so many cases in sanitized builds.
// The others run all.
#ifdef __SANITIZE_ADDRESS__
constexpr int kThinning = 4;
#else
constexpr int kThinning = 1;
#endif

}  // namespace kestrove::testing
