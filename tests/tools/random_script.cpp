// SPDX-License-Identifier: Apache-2.0
#include "tests/tools/random_script.h"

#include <random>
#include <vector>

namespace kestrove::testing {
namespace {

class Drawing {
 public:
  explicit Drawing(unsigned seed) : random_(seed) {}

  std::string script() {
    std::string text;
    for (int i = below(40); i > 0; --i) text += line() + "\n";
    return text;
  }

 private:
  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::string number(int low, int high) { return std::to_string(low + below(high - low + 1)); }
  std::string of(const std::vector<std::string>& words) {
    return words[static_cast<size_t>(below(static_cast<int>(words.size())))];
  }
  std::string port() { return of({"LAN", "WAN"}); }
  std::string onOrOff() { return of({"on", "off"}); }
  std::string host() { return "10." + number(0, 2) + "." + number(0, 2) + "." + number(1, 4); }
  std::string mask() { return of({"255.0.0.0", "255.255.0.0", "255.255.255.0", "255.255.255.255"}); }
  std::string host6() { return "fd0" + number(0, 2) + "::" + number(1, 4); }

  std::string line() {
    switch (below(12)) {
      case 0: return "set rateLimit " + port() + " " + number(10, 90000);
      case 1: return "set mtu " + port() + " " + number(576, 1500);
      case 2:
        return "set " + of({"prb", "pbr", "sshInterface", "httpInterface", "compression", "logging"}) + " " + onOrOff();
      case 3: return of({"set pbrAddress ", "set pbrMask "}) + port() + " " + mask();
      case 4: return "set accelerationMode " + of({"perConnection", "ratepacing", "errors", "variable", ""});
      case 5:
        return "set linkSetting " + of({"LAN", "WAN", "MANAGEMENT"}) + " " + of({"auto", "10baseT", "100baseTx-FD"});
      case 6: return "set interfaceMode " + of({"double", "single 5 6", "single 7 8"});
      case 7: return address();
      case 8: return route();
      case 9: return own();
      default: return rule();
    }
  }

  std::string address() {
    const std::string flag = of({" -b", " -v", " -m"});
    return "ip add " + (below(3) ? host() + " " + mask() : host6() + " " + number(8, 128)) + flag;
  }

  std::string route() {
    const std::string end = of({"", " -n"});
    if (below(3)) return "route add " + of({"172.16.0.0 ", "172.17.0.0 "}) + mask() + " " + host() + end;
    return "route6 add " + of({"fd10:: ", "fd11:: "}) + number(16, 18) + " " + host6() + end;
  }

  std::string own() {
    return of({"set wanLinkRate 1M", "set LAN_MTU 1400", "set sysName \"branch " + number(1, 3) + "\"",
               "set lanGateway " + host(), "route add 172.18.0.0/16 " + host(), "rule add 0 --proto tcp --dport 80-90",
               "address add fdbb::" + number(1, 4) + "/64 --br0"});
  }

  std::string rule() {
    std::string text = "rule add " + number(1, 4) + " ";
    if (below(2))
      text += "-ipVersion 4 -sa " + host() + "/" + mask() + " ";
    else
      text += of({"-ipVersion Any ", "-ipVersion 6 -sa6 ::/0 -da6 fd00::/16 "});
    text += "-proto " + of({"ANY ", "TCP -srcPort 80 -srcPortEnd 90 -destPort 7 ", "UDP ", ""});
    text += of({"-d ", "-b ", "-p 3 -bw 512 ", "-p 8 -bw 10  -noAccel "});
    return text + of({"", "-NIS "});
  }

  std::mt19937 random_;
};

}  // namespace

std::string drawScript(unsigned seed) { return Drawing(seed).script(); }

}  // namespace kestrove::testing
