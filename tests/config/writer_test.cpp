// What a saved configuration file looks like, to the byte.
#include <arpa/inet.h>
#include <string.h>

#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kFile[] = "/etc/config/kestrove.conf";

std::string keywordColumn(const std::string& keyword) { return keyword + std::string(25 - keyword.size(), ' ') + " "; }

class WriterTest : public StoreTest {
 protected:
  std::string saved() {
    EXPECT_EQ(0, save_shared_memory());
    return readFile(kFile);
  }
  // The one line of a keyword, without keyword and newline; "none" when there is none.
  std::string valueOf(const std::string& keyword) {
    std::string text = "\n" + saved();
    size_t at = text.find("\n" + keywordColumn(keyword));
    if (at == std::string::npos) return "none";
    at += 27;
    return text.substr(at, text.find('\n', at) - at);
  }
};

constexpr char kBlankFile[] =
    "LAN_NAME                  \n"
    "LAN_RATE                  0\n"
    "LAN_ADDR                  0.0.0.0\n"
    "LAN_MASK                  0.0.0.0\n"
    "LAN_GATEWAY               0.0.0.0\n"
    "LAN_LINK_SETTING          0\n"
    "MANAGEMENT_LINK_SETTING   0\n"
    "LAN_MTU                   0\n"
    "LAN_VLAN_ID               0\n"
    "INTERNET_NAME             \n"
    "INTERNET_RATE             0\n"
    "INTERNET_CONGESTION       0\n"
    "INTERNET_MTU              0\n"
    "WAN_VLAN_ID               0\n"
    "INTERNET_ADDR             0.0.0.0\n"
    "INTERNET_MASK             0.0.0.0\n"
    "INTERNET_GATEWAY          0.0.0.0\n"
    "INTERNET_LINK_SETTING     0\n"
    "BRIDGE_MASK               0.0.0.0\n"
    "FTW_CONFIG                0\n"
    "SNMP_VERSION              0\n"
    "SYS_NAME                  \n"
    "SYS_LOCATION              \n"
    "SYS_CONTACT               \n"
    "REBOOT_COUNT              0\n";

TEST_F(WriterTest, FreshStoreHasNoLineForSwitchesThatWereNeverSet) { EXPECT_EQ(kBlankFile, saved()); }

}  // namespace
}  // namespace kestrove::testing
