// SPDX-License-Identifier: Apache-2.0
// Two sequences of texts, and the least that makes one of the other.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace ctl {

// Texts that are not common to both, between two that are.
struct Gap {
  size_t before;   // where it begins in the first sequence
  size_t removed;  // texts of the first one
  size_t after;
  size_t added;
};

// By a longest common subsequence. Where so many texts stand several times that it would take too long to find, the
// first of one sequence goes with the first of the other, and so on: still a common subsequence, if not the longest.
std::vector<Gap> gapsBetween(const std::vector<std::string_view>& before, const std::vector<std::string_view>& after);

}  // namespace ctl
