// SPDX-License-Identifier: Apache-2.0
// The metrics, read by another program.
#include <gmock/gmock.h>
#include <string.h>
#include <sys/stat.h>

#include "tests/support/peer.h"
#include "tests/tools/programs.h"

namespace kestrove::testing {
namespace {

using ::testing::AllOf;
using ::testing::Gt;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Lt;
using ::testing::Not;

constexpr char kFile[] = "/tmp/metrics/kestrove.prom";

// The families as a strict reader of the format has them; null, with a failure, where it refuses them.
Json readMetrics(const std::string& text) {
  const Ran checked = run("python3 " METRICS_CHECK, text);
  EXPECT_EQ(0, checked.status) << checked.err << text;
  return checked.status == 0 ? checked.json() : Json::object();
}

// Of the metric with these labels.
Json valueOf(const Json& families, const std::string& family, const Json& labels) {
  for (const Json& metric : families.value(family, Json::object()).value("metrics", Json::array())) {
    if (metric["labels"] == labels) return metric["value"];
  }
  ADD_FAILURE() << family << labels;
  return {};
}

class CtlMetricsTest : public StoreTest {
 protected:
  static Json metrics() {
    const Ran ran = ctl("metrics");
    EXPECT_EQ(0, ran.status) << ran.err;
    return readMetrics(ran.out);
  }
};

TEST_F(CtlMetricsTest, AStrictReaderTakesThemAll) {
  logEvent(21, 2, "admin");
  shm->config.productId = 3;
  const Json families = metrics();
  EXPECT_THAT(families.size(), AllOf(Gt(55u), Lt(80u)));
  EXPECT_EQ(1, valueOf(families, "kestrove_up", Json::object()));
  EXPECT_EQ(1, valueOf(families, "kestrove_operational_state", {{"state", "operational"}}));
  EXPECT_EQ(0, valueOf(families, "kestrove_operational_state", {{"state", "debug"}}));
  EXPECT_EQ(8192, valueOf(families, "kestrove_table_capacity", {{"table", "rules"}}));
  EXPECT_EQ(1, valueOf(families, "kestrove_table_entries", {{"table", "rules"}}));
  EXPECT_EQ(1, valueOf(families, "kestrove_events_held", {{"source", "web"}}));
  EXPECT_EQ(0, valueOf(families, "kestrove_store_findings", {{"table", "all"}}));
  EXPECT_EQ(0, valueOf(families, "kestrove_lock_held", Json::object()));
}

TEST_F(CtlMetricsTest, CountersComeInBaseUnitsAndWhole) {
  shm->statistics.totalUncompressedDataSize = UINT64_MAX;
  shm->statistics.compressionRatio = 37;
  shm->statistics.counterLastResetTime = 12345;
  shm->config.wanLinkRate = 2048000;
  shm->qos[3].bytesSent = 77;
  shm->statistics.interfaceRow[1].bytesReceived = 99;
  EXPECT_THAT(ctl("metrics").out, HasSubstr("\nkestrove_uncompressed_bytes_total 18446744073709551615\n"));
  const Json families = metrics();
  EXPECT_EQ(0.37, valueOf(families, "kestrove_compression_ratio", Json::object()));
  EXPECT_EQ(123.45, valueOf(families, "kestrove_counters_reset_uptime_seconds", Json::object()));
  EXPECT_EQ(256000, valueOf(families, "kestrove_link_rate_bytes_per_second", {{"side", "wan"}}));
  EXPECT_EQ(77, valueOf(families, "kestrove_queue_bytes_total", {{"queue", "wan_3"}}));
  EXPECT_EQ(99, valueOf(families, "kestrove_port_bytes_total", {{"port", "wan"}, {"direction", "received"}}));
}

TEST_F(CtlMetricsTest, LabelsComeBackAsTheyWere) {
  for (const char* name : {"a \"quoted\" \\ name", "two\nlines", "back\\n", "größer", "#{}=,"}) {
    strncpy(shm->config.sysName, name, sizeof shm->config.sysName);
    const Json unit = metrics()["kestrove_unit_info"]["metrics"][0]["labels"];
    EXPECT_EQ(name, unit["name"]);
  }
  strncpy(shm->config.sysName, "bad\x1b\xff", sizeof shm->config.sysName);
  EXPECT_EQ("bad\\x1b\\xff", metrics()["kestrove_unit_info"]["metrics"][0]["labels"]["name"]);
}

TEST_F(CtlMetricsTest, ADamagedStoreGivesMetricsToo) {
  memset(static_cast<void*>(shm), 0xFF, sizeof *shm);
  shm->operationalState = 1;
  memset(shm->reserved32, 0, sizeof shm->reserved32);
  const Json families = metrics();
  EXPECT_EQ(0, valueOf(families, "kestrove_operational_state", {{"state", "debug"}}));
  EXPECT_THAT(valueOf(families, "kestrove_store_findings", {{"table", "all"}}).get<double>(), Gt(0.0));
}

TEST_F(CtlMetricsTest, TwoOfOneNameAreOneSeries) {
  shm->config.userCount = 2;
  for (UserAccount& user : {std::ref(shm->config.users[0]), std::ref(shm->config.users[1])}) {
    strcpy(user.username, "alice");
    user.lastLoginSeconds = 1000;
  }
  EXPECT_EQ(1u, metrics()["kestrove_user_last_login_timestamp_seconds"]["metrics"].size());
}

TEST_F(CtlMetricsTest, WithJsonTheSameFamiliesComeAsData) {
  const Json families = metrics();
  const Json data = ctl("--json metrics").json()["families"];
  ASSERT_EQ(families.size(), data.size());
  for (const Json& family : data) {
    EXPECT_EQ(families[family["name"].get<std::string>()]["help"], family["help"]);
    EXPECT_EQ(families[family["name"].get<std::string>()]["metrics"].size(), family["metrics"].size());
  }
}

TEST_F(CtlMetricsTest, AFileIsReplacedWholeAndReadable) {
  run("mkdir -p /tmp/metrics");
  writeFile(kFile, "old\n");
  EXPECT_EQ(0, ctl("metrics --write " + std::string(kFile)).status);
  EXPECT_EQ(1, valueOf(readMetrics(readFile(kFile)), "kestrove_up", Json::object()));
  struct stat facts;
  ASSERT_EQ(0, stat(kFile, &facts));
  EXPECT_EQ(0644u, facts.st_mode & 07777);
  EXPECT_EQ("kestrove.prom\n", run("ls -A /tmp/metrics").out) << "nothing else is left there";
}

TEST_F(CtlMetricsTest, AFileThatCannotBeWrittenLeavesTheOldOne) {
  run("mkdir -p /tmp/metrics; mount -t tmpfs -o size=4k tmpfs /tmp/metrics");
  writeFile(kFile, "old\n");
  Ran full = ctl("--json metrics --write " + std::string(kFile));
  EXPECT_EQ(5, full.status);
  EXPECT_EQ("old\n", readFile(kFile));
  EXPECT_EQ("kestrove.prom\n", run("ls -A /tmp/metrics").out);
  EXPECT_EQ(5, ctl("metrics --write /tmp").status);
  EXPECT_EQ(5, ctl("metrics --write /no/such/folder/x.prom").status);
}

TEST_F(CtlMetricsTest, WithoutAStoreItIsSaidToBeDown) {
  dropStore();
  Ran ran = ctl("metrics");
  EXPECT_EQ(3, ran.status);
  const Json families = readMetrics(ran.out);
  EXPECT_EQ(0, valueOf(families, "kestrove_up", Json::object()));
  EXPECT_FALSE(families.contains("kestrove_reports_total"));
  run("mkdir -p /tmp/metrics");
  EXPECT_EQ(3, ctl("metrics --write " + std::string(kFile)).status);
  EXPECT_THAT(readFile(kFile), HasSubstr("\nkestrove_up 0\n"));
  EXPECT_EQ(3, ctl("--json metrics").json()["error"]["exit"]);
  makeStore();
}

TEST_F(CtlMetricsTest, ALockThatIsHeldIsNamed) {
  Peer holder([](const Peer::Line& line) {
    shm_lock();
    line.say('l');
    line.hear();
    return 0;
  });
  ASSERT_EQ('l', holder.line().hear());
  Ran ran = ctl("--wait 0 metrics");
  EXPECT_EQ(6, ran.status);
  const Json families = readMetrics(ran.out);
  EXPECT_EQ(1, valueOf(families, "kestrove_lock_held", Json::object()));
  EXPECT_EQ("running", families["kestrove_lock_holder_info"]["metrics"][0]["labels"]["state"]);
}

TEST(MetricsCheck, RefusesWhatIsWrong) {
  const std::string good = "# HELP a_total Text.\n# TYPE a_total counter\na_total{b=\"c\"} 1\n";
  EXPECT_EQ(0, run("python3 " METRICS_CHECK, good).status);
  for (const char* wrong :
       {"a_total 1\n", "# HELP a_total Text.\n# TYPE a_total counter\na_total 1",
        "# HELP a Text.\n# TYPE a counter\na 1\n", "# HELP a_total Text.\n# TYPE a_total gauge\na_total 1\n",
        "# TYPE a gauge\na 1\n", "# HELP a Text.\n# TYPE a gauge\n", "# HELP a Text.\n# TYPE a gauge\na 1 1700000000\n",
        "# HELP a Text.\n# TYPE a gauge\na{b=\"c\n\"} 1\n", "# HELP a Text.\n# TYPE a gauge\na{b=\"\\t\"} 1\n",
        "# HELP a Text.\n# TYPE a gauge\na 1\na 1\n", "# HELP a_info Text.\n# TYPE a_info gauge\na_info 2\n",
        "# HELP a_bits Text.\n# TYPE a_bits gauge\na_bits 2\n", "# HELP a Text.\n# TYPE a gauge\na 1\n\n",
        "# HELP a Text.\n# TYPE a gauge\nb 1\n"}) {
    EXPECT_NE(0, run("python3 " METRICS_CHECK, wrong).status) << wrong;
  }
}

}  // namespace
}  // namespace kestrove::testing
