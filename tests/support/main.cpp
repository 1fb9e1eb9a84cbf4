// SPDX-License-Identifier: Apache-2.0
// The entry of every test program.

#include <gmock/gmock.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr char kInside[] = "/run/kestrove/inside";
constexpr int kRefused = 99;

bool onlyLists(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (strcmp(argv[i], "--gtest_list_tests") == 0) return true;
  }
  return false;
}

}  // namespace

// Tests write system files, set the clock and reboot: they run in the appliance of the sandbox or not at all.
int main(int argc, char** argv) {
  if (access(kInside, F_OK) == -1 && !onlyLists(argc, argv)) {
    fprintf(stderr, "%s runs in the sandbox only: kestrove-sandbox -- %s\n", argv[0], argv[0]);
    return kRefused;
  }
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
