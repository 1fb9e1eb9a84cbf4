// SPDX-License-Identifier: Apache-2.0
// The version texts.
#include <string.h>

#include "tests/system/system_fixture.h"

namespace kestrove::testing {
namespace {

struct TextRow {
  int (*get)(char*, int);
  char* field;
  size_t width;
};

TEST_F(ProcessTest, VersionTextsAreCopiedLikeFields) {
  ConfigRecord& config = shm->config;
  TextRow rows[] = {{getFullVersionNumber, config.kestroveFullVersion, 64},
                    {getFullDrelmVersionNumber, config.drelmFullVersion, 64},
                    {getKestroveVersion, config.kestroveVersion, 64},
                    {getDrelmVersion, config.drelmVersion, 64},
                    {getUnitId, config.unitId, 256}};
  for (TextRow& row : rows) {
    std::string text = "4.1.0." + std::to_string(&row - rows);
    strcpy(row.field, text.c_str());
    char buffer[400];
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(0, row.get(buffer, 16));
    EXPECT_EQ(text + std::string(9, '\0') + "#", std::string(buffer, 17));
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(0, row.get(buffer, 3));
    EXPECT_EQ("4.1#", std::string(buffer, 4));
    EXPECT_EQ(0, row.get(buffer, 0));
    memset(row.field, 'f', row.width);  // the field without its terminator
    EXPECT_EQ(0, row.get(buffer, 400));
    EXPECT_EQ(std::string(row.width, 'f') + std::string(400 - row.width, '\0'), std::string(buffer, 400));
    EXPECT_FAILS_WITH(SHM_EINVAL, row.get(nullptr, 10));
    EXPECT_FAILS_WITH(SHM_EINVAL, row.get(buffer, -1));
    memset(row.field, 0, row.width);
  }
}

}  // namespace
}  // namespace kestrove::testing
