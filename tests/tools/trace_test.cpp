// SPDX-License-Identifier: Apache-2.0
// The decoders, on records made by hand: this process is the one that is read.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <net/if_arp.h>
#include <net/route.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

// The kernel's headers, after the C library's, which they give way to.
#include <linux/if_bridge.h>
#include <linux/ipv6.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>

#include "sys/interface_request.h"
#include "tools/ctl/trace/calls.h"
#include "tools/ctl/trace/memory.h"
#include "tools/ctl/trace/netlink.h"
#include "tools/ctl/trace/requests.h"
#include "tools/ctl/trace/words.h"

namespace ctl {
namespace {

using ::testing::ElementsAre;

uint64_t placeOf(const void* record) { return reinterpret_cast<uintptr_t>(record); }

std::string words(uint64_t number, const void* record, int family = AF_INET) {
  return requestText(Memory(getpid()), {number, placeOf(record), family});
}

sockaddr ipv4(const char* text) {
  sockaddr_in inet = {};
  inet.sin_family = AF_INET;
  inet.sin_addr.s_addr = inet_addr(text);
  sockaddr address;
  memcpy(&address, &inet, sizeof address);
  return address;
}

TEST(Requests, InterfaceAddresses) {
  kestrove::sys::InterfaceRequest request("eth0.12");
  request.ifr_addr = ipv4("10.1.2.3");
  EXPECT_EQ("SIOCSIFADDR eth0.12 10.1.2.3", words(SIOCSIFADDR, &request));
  EXPECT_EQ("SIOCSIFADDR eth0.12 10.1.2.3", words(SIOCSIFADDR, &request, AF_PACKET));
  EXPECT_EQ("SIOCDIFADDR eth0.12 10.1.2.3", words(SIOCDIFADDR, &request));
  EXPECT_EQ("SIOCSIFNETMASK eth0.12 10.1.2.3", words(SIOCSIFNETMASK, &request));
  EXPECT_EQ("SIOCSIFBRDADDR eth0.12 10.1.2.3", words(SIOCSIFBRDADDR, &request));
}

TEST(Requests, ANameThatFillsItsFieldEndsThere) {
  ifreq request = {};
  memset(request.ifr_name, 'e', sizeof request.ifr_name);
  request.ifr_flags = IFF_UP;
  EXPECT_EQ("SIOCSIFFLAGS " + std::string(IFNAMSIZ, 'e') + " UP", words(SIOCSIFFLAGS, &request));
}

TEST(Requests, InterfaceFlags) {
  kestrove::sys::InterfaceRequest request("br0");
  request.ifr_flags = IFF_UP | IFF_BROADCAST | IFF_MULTICAST;
  EXPECT_EQ("SIOCSIFFLAGS br0 UP|BROADCAST|MULTICAST", words(SIOCSIFFLAGS, &request));
  request.ifr_flags = 0;
  EXPECT_EQ("SIOCSIFFLAGS br0 0", words(SIOCSIFFLAGS, &request));
}

TEST(Requests, Ipv6AddressesByTheFamilyOfTheSocket) {
  in6_ifreq request = {};
  inet_pton(AF_INET6, "fd00:10::44", &request.ifr6_addr);
  request.ifr6_prefixlen = 64;
  request.ifr6_ifindex = 5;
  EXPECT_EQ("SIOCSIFADDR fd00:10::44/64 index 5", words(SIOCSIFADDR, &request, AF_INET6));
  EXPECT_EQ("SIOCDIFADDR fd00:10::44/64 index 5", words(SIOCDIFADDR, &request, AF_INET6));
}

TEST(Requests, Routes) {
  rtentry route = {};
  route.rt_dst = ipv4("172.20.0.0");
  route.rt_genmask = ipv4("255.255.0.0");
  route.rt_gateway = ipv4("10.0.0.1");
  route.rt_flags = RTF_UP | RTF_GATEWAY;
  EXPECT_EQ("SIOCADDRT 172.20.0.0/16 via 10.0.0.1 flags UP|GATEWAY", words(SIOCADDRT, &route));
  char device[] = "eth0";
  route.rt_dev = device;
  route.rt_metric = 3;
  route.rt_flags |= RTF_HOST;
  route.rt_genmask = ipv4("255.0.255.0");
  EXPECT_EQ("SIOCDELRT 172.20.0.0/255.0.255.0 via 10.0.0.1 flags UP|GATEWAY|HOST metric 3 dev eth0",
            words(SIOCDELRT, &route));
}

TEST(Requests, Ipv6Routes) {
  in6_rtmsg route = {};
  inet_pton(AF_INET6, "fd00:77::", &route.rtmsg_dst);
  inet_pton(AF_INET6, "fd00:10::3", &route.rtmsg_gateway);
  route.rtmsg_dst_len = 128;
  route.rtmsg_flags = RTF_UP | RTF_HOST;
  route.rtmsg_ifindex = 7;
  EXPECT_EQ("SIOCADDRT fd00:77::/128 via fd00:10::3 index 7 flags UP|HOST", words(SIOCADDRT, &route, AF_INET6));
  route.rtmsg_metric = 9;
  EXPECT_EQ("SIOCDELRT fd00:77::/128 via fd00:10::3 index 7 flags UP|HOST metric 9",
            words(SIOCDELRT, &route, AF_INET6));
}

TEST(Requests, ArpEntries) {
  arpreq entry = {};
  entry.arp_pa = ipv4("10.0.0.1");
  memcpy(entry.arp_ha.sa_data, "\x02\x00\xAB\x00\x00\x01", 6);
  entry.arp_flags = ATF_COM | ATF_PERM;
  EXPECT_EQ("SIOCSARP 10.0.0.1 02:00:ab:00:00:01 flags COM|PERM", words(SIOCSARP, &entry));
  entry.arp_flags = 0;
  strcpy(entry.arp_dev, "br0");
  EXPECT_EQ("SIOCDARP 10.0.0.1 flags 0 dev br0", words(SIOCDARP, &entry));
}

TEST(Requests, Bridges) {
  char name[IFNAMSIZ] = "br0";
  unsigned long add[] = {BRCTL_ADD_BRIDGE, reinterpret_cast<unsigned long>(name), 0};
  EXPECT_EQ("SIOCGIFBR ADD_BRIDGE br0", words(SIOCGIFBR, add));
  unsigned long remove[] = {BRCTL_DEL_BRIDGE, reinterpret_cast<unsigned long>(name), 0};
  EXPECT_EQ("SIOCSIFBR DEL_BRIDGE br0", words(SIOCSIFBR, remove));
  unsigned long look[] = {BRCTL_GET_BRIDGES, 0, 32};
  EXPECT_EQ("", words(SIOCGIFBR, look));
  unsigned long unknown[] = {77, 8, 9};
  EXPECT_EQ("SIOCGIFBR command 77 8 9", words(SIOCGIFBR, unknown));
}

std::string portWords(unsigned long command, unsigned long first = 0, unsigned long second = 0) {
  unsigned long arguments[] = {command, first, second, 0};
  kestrove::sys::InterfaceRequest request("br0");
  request.ifr_data = reinterpret_cast<char*>(arguments);
  return words(SIOCDEVPRIVATE, &request);
}

TEST(Requests, BridgePorts) {
  EXPECT_EQ("SIOCDEVPRIVATE br0 ADD_IF index 3", portWords(BRCTL_ADD_IF, 3));
  EXPECT_EQ("SIOCDEVPRIVATE br0 DEL_IF index 3", portWords(BRCTL_DEL_IF, 3));
  EXPECT_EQ("SIOCDEVPRIVATE br0 SET_BRIDGE_STP_STATE 0", portWords(BRCTL_SET_BRIDGE_STP_STATE, 0));
  EXPECT_EQ("SIOCDEVPRIVATE br0 SET_PATH_COST port 2 100", portWords(BRCTL_SET_PATH_COST, 2, 100));
  EXPECT_EQ("", portWords(BRCTL_GET_BRIDGE_INFO, 1));
  kestrove::sys::InterfaceRequest request("br0");
  EXPECT_EQ("SIOCDEVPRIVATE br0 with a record that cannot be read", words(SIOCDEVPRIVATE, &request));
}

TEST(Requests, RecordsThatCannotBeRead) {
  for (int family : {AF_INET, AF_INET6}) {
    for (auto [number, name] : {std::pair{SIOCSIFADDR, "SIOCSIFADDR"}, {SIOCADDRT, "SIOCADDRT"}}) {
      EXPECT_EQ(std::string(name) + " with a record that cannot be read", words(uint64_t(number), nullptr, family));
    }
  }
  EXPECT_EQ("SIOCSIFFLAGS with a record that cannot be read", words(SIOCSIFFLAGS, nullptr));
  EXPECT_EQ("SIOCSARP with a record that cannot be read", words(SIOCSARP, nullptr));
  EXPECT_EQ("SIOCGIFBR with a record that cannot be read", words(SIOCGIFBR, nullptr));
  EXPECT_EQ("SIOCDEVPRIVATE with a record that cannot be read", words(SIOCDEVPRIVATE, nullptr));
}

TEST(Requests, LookUpsAreNotAmongThem) {
  for (int look : {SIOCGIFADDR, SIOCGIFFLAGS, SIOCGIFINDEX, SIOCGIFNAME, SIOCGIFHWADDR, SIOCGARP}) {
    auto number = static_cast<uint64_t>(look);
    EXPECT_FALSE(changesNetwork(number)) << number;
    EXPECT_EQ("", words(number, nullptr));
  }
  EXPECT_TRUE(changesNetwork(SIOCADDRT));
}

struct AddressMessage {
  nlmsghdr header = {sizeof(AddressMessage), RTM_NEWADDR, NLM_F_REQUEST | NLM_F_ACK | NLM_F_CREATE | NLM_F_EXCL, 7, 0};
  ifaddrmsg body = {AF_INET, 24, IFA_F_PERMANENT, 0, 3};
  rtattr labelHead = {8, IFA_LABEL};
  char label[4] = "br0";
  rtattr localHead = {8, IFA_LOCAL};
  uint8_t local[4] = {10, 0, 0, 1};
  rtattr flagsHead = {8, IFA_FLAGS};
  uint8_t flags[4] = {0x80, 0, 0, 0};
};

template <typename Record>
std::span<const unsigned char> bytesOf(const Record& record) {
  return {reinterpret_cast<const unsigned char*>(&record), sizeof record};
}

TEST(Netlink, AnAddressWithItsAttributesAndItsBytes) {
  AddressMessage message;
  EXPECT_EQ(
      "RTM_NEWADDR flags REQUEST|ACK|EXCL|CREATE seq 7 AF_INET prefix 24 flags PERMANENT scope 0 index 3 "
      "IFA_LABEL br0 IFA_LOCAL 10.0.0.1 IFA_FLAGS 80000000 bytes "
      "30000000140005060700000000000000"
      "0218800003000000"
      "0800030062723000"
      "080002000a000001"
      "0800080080000000",
      netlinkText(bytesOf(message)));
  message.header.nlmsg_type = RTM_DELADDR;
  message.body.ifa_family = AF_INET6;
  EXPECT_THAT(netlinkText(bytesOf(message)), ::testing::HasSubstr(" AF_INET6 "));
  EXPECT_THAT(netlinkText(bytesOf(message)), ::testing::HasSubstr(" IFA_LOCAL 0a000001 ")) << "too short for IPv6";
}

TEST(Netlink, DamagedMessagesEndTheWords) {
  AddressMessage message;
  message.localHead.rta_len = 200;
  EXPECT_THAT(netlinkText(bytesOf(message)), ::testing::HasSubstr(" IFA_LABEL br0 damaged attribute bytes 3000"));
  message.localHead.rta_len = 3;
  EXPECT_THAT(netlinkText(bytesOf(message)), ::testing::HasSubstr(" IFA_LABEL br0 damaged attribute bytes 3000"));
  EXPECT_THAT(netlinkText(bytesOf(message).first(20)), ::testing::HasSubstr(" seq 7 cut short bytes 3000"));
  EXPECT_EQ("cut short bytes 3000", netlinkText(bytesOf(message).first(2)));
  message.header.nlmsg_len = 4;
  EXPECT_THAT(netlinkText(bytesOf(message)), ::testing::HasSubstr(" seq 7 cut short bytes 0400"));
}

TEST(Netlink, LookUpsHaveNoWords) {
  for (int type : {int(RTM_GETLINK), int(RTM_GETADDR), int(RTM_GETROUTE), int(RTM_GETRULE), NLMSG_NOOP}) {
    nlmsghdr header = {sizeof header, static_cast<uint16_t>(type), NLM_F_REQUEST, 1, 0};
    EXPECT_EQ("", netlinkText(bytesOf(header))) << type;
  }
  nlmsghdr header = {sizeof header, RTM_NEWROUTE, NLM_F_REQUEST, 1, 0};
  EXPECT_THAT(netlinkText(bytesOf(header)), ::testing::StartsWith("RTM_NEWROUTE flags REQUEST seq 1 bytes 1000"));
}

TEST(Netlink, TheAnswerIsFoundBehindOtherMessages) {
  struct {
    nlmsghdr other = {sizeof other, RTM_NEWADDR, 0, 0, 0};
    nlmsghdr header = {NLMSG_LENGTH(sizeof(nlmsgerr)), NLMSG_ERROR, 0, 0, 0};
    nlmsgerr answer = {-EEXIST, {}};
  } reply;
  EXPECT_EQ(-EEXIST, netlinkAnswer(bytesOf(reply)));
  EXPECT_EQ(std::nullopt, netlinkAnswer(bytesOf(reply.other)));
  EXPECT_EQ(std::nullopt, netlinkAnswer(bytesOf(reply).first(40))) << "cut short";
  reply.other.nlmsg_len = 0;
  EXPECT_EQ(std::nullopt, netlinkAnswer(bytesOf(reply)));
}

TEST(Words, FlagsNamesMasksAnswers) {
  constexpr NumberName kTable[] = {{1, "ONE"}, {4, "FOUR"}};
  EXPECT_EQ("ONE|FOUR|0xa", flagsText(kTable, 15));
  EXPECT_EQ("0", flagsText(kTable, 0));
  EXPECT_EQ("FOUR", nameOf(kTable, 4));
  EXPECT_EQ("5", nameOf(kTable, 5));
  EXPECT_EQ("/0", maskText(0));
  EXPECT_EQ("/32", maskText(0xFFFFFFFF));
  EXPECT_EQ("/255.0.255.0", maskText(inet_addr("255.0.255.0")));
  EXPECT_EQ("3", answerText(3));
  EXPECT_EQ("ENODEV", answerText(-ENODEV));
  EXPECT_EQ("-4000", answerText(-4000));
}

TEST(Words, WordsThatAreNotPlainAreQuoted) {
  std::vector<std::string> plain = {"/sbin/ip", "-json", "", "a b", "it's", "$x"};
  EXPECT_EQ("/sbin/ip -json '' 'a b' 'it'\\''s' '$x'", wordsText(plain));
}

TEST(MemoryOfAProcess, TextsEndAtTheirZeroOrWithTheMemory) {
  auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  auto* place = static_cast<char*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_NE(MAP_FAILED, static_cast<void*>(place));
  munmap(place + page, page);
  memset(place, 'x', page);
  Memory memory(getpid());
  EXPECT_EQ("xxx", memory.text(placeOf(place + page - 3)));
  EXPECT_EQ(1000u, memory.text(placeOf(place + page - 1000)).size());
  place[page - 10] = '\0';
  EXPECT_EQ(990u, memory.text(placeOf(place + page - 1000)).size());
  EXPECT_EQ("", memory.text(placeOf(place + page)));
  const char* list[] = {"one", "two", nullptr};
  EXPECT_THAT(memory.texts(placeOf(list)), ElementsAre("one", "two"));
  munmap(place, page);
}

std::string effectText(const SystemCall& call) {
  std::optional<Effect> effect = effectOf(getpid(), call);
  return effect ? effect->kind + " " + effect->text : "";
}

TEST(Calls, ExecutionsAreShellLinesOrPrograms) {
  auto text = [](std::vector<const char*> words) {
    words.push_back(nullptr);
    return effectText({SYS_execve, {0, placeOf(words.data())}});
  };
  EXPECT_EQ("shell ip rule flush >/dev/null ", text({"sh", "-c", "ip rule flush >/dev/null "}));
  EXPECT_EQ("shell wget x", text({"sh", "-c", "--", "wget x"}));
  EXPECT_EQ("shell ip", text({"/bin/sh", "-c", "ip"}));
  EXPECT_EQ("program sh script", text({"sh", "script"}));
  EXPECT_EQ("program /sbin/iptables -F", text({"/sbin/iptables", "-F"}));
}

TEST(Calls, TheSocketTellsWhatTheRecordIs) {
  union {
    ifreq interface;
    in6_ifreq address;
  } request = {};
  request.address.ifr6_prefixlen = 64;
  request.address.ifr6_ifindex = 5;
  kestrove::sys::Descriptor six = kestrove::sys::openSocket(AF_INET6, SOCK_DGRAM);
  kestrove::sys::Descriptor four = kestrove::sys::openSocket(AF_INET, SOCK_DGRAM);
  auto text = [&](const kestrove::sys::Descriptor& socket, uint64_t number) {
    return effectText({SYS_ioctl, {static_cast<uint64_t>(socket.get()), number, placeOf(&request)}});
  };
  EXPECT_EQ("ioctl SIOCSIFADDR ::/64 index 5", text(six, SIOCSIFADDR));
  EXPECT_EQ("ioctl SIOCSIFADDR  5.0.0.0", text(four, SIOCSIFADDR)) << "the same bytes";
  EXPECT_EQ("", text(four, SIOCGIFADDR));
}

TEST(Calls, OnlyMessagesToRoutingAreEffects) {
  AddressMessage content;
  iovec parts[] = {{&content, 20}, {reinterpret_cast<char*>(&content) + 20, sizeof content - 20}};
  msghdr message = {};
  message.msg_iov = parts;
  message.msg_iovlen = 2;
  kestrove::sys::Descriptor routing = kestrove::sys::openSocket(AF_NETLINK, SOCK_RAW, NETLINK_ROUTE);
  kestrove::sys::Descriptor local = kestrove::sys::openSocket(AF_UNIX, SOCK_DGRAM);
  auto text = [&](const kestrove::sys::Descriptor& socket) {
    return effectText({SYS_sendmsg, {static_cast<uint64_t>(socket.get()), placeOf(&message)}});
  };
  EXPECT_EQ("netlink " + netlinkText(bytesOf(content)), text(routing));
  EXPECT_EQ("", text(local));
  content.header.nlmsg_type = RTM_GETADDR;
  EXPECT_EQ("", text(routing));
}

TEST(Calls, SignalsButNotTheQuestionWhetherAProcessLives) {
  EXPECT_EQ("signal SIGUSR1 to 77", effectText({SYS_kill, {77, SIGUSR1}}));
  EXPECT_EQ("signal signal 99 to -1", effectText({SYS_kill, {static_cast<uint64_t>(-1), 99}}));
  EXPECT_EQ("", effectText({SYS_kill, {77, 0}}));
  EXPECT_EQ("", effectText({SYS_getpid, {}}));
}

TEST(Calls, TheAnswerIsReadFromTheSameDescriptor) {
  SystemCall sent = {SYS_sendmsg, {5}};
  EXPECT_TRUE(receivesAfter(sent, {SYS_recvfrom, {5}}));
  EXPECT_FALSE(receivesAfter(sent, {SYS_recvfrom, {6}}));
  EXPECT_FALSE(receivesAfter(sent, {SYS_sendmsg, {5}}));
}

}  // namespace
}  // namespace ctl
