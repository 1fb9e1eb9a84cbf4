// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/preview/kernel_copy.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include "tools/common/program.h"
#include "tools/ctl/preview/kernel_state.h"

namespace ctl::preview {
namespace {

constexpr size_t kMostSingle = 100;
constexpr char kEither[] = "";
constexpr char kBatch[] = "/tmp/kestrovectl-kernel";

// What the kernel makes by itself, with the links and their addresses.
constexpr const char* kItsOwn[] = {" proto kernel", " table local", " error "};
constexpr const char* kItsOwnRules[] = {"0:", "32766:", "32767:"};

using Lines = std::vector<std::string>;

Lines linesOf(const Json& state, const std::string& section) {
  Lines lines;
  std::istringstream stream(state.value(section, ""));
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

void writeLines(const Lines& lines) {
  std::ofstream file(kBatch);
  for (const std::string& line : lines) file << line << "\n";
}

// Each line does what it can: what is missing in the end is told.
void runBatch(const Lines& lines, const std::string& family = kEither) {
  writeLines(lines);
  std::vector<std::string> line = {"ip", "-force", "-batch", kBatch};
  if (family != kEither) line.insert(line.begin() + 1, family);
  if (!lines.empty()) tools::runForOutput(line, true);
}

std::string nameOf(const Json& link) { return link.value("ifname", ""); }

std::set<std::string> namesOf(const Json& links) {
  std::set<std::string> names;
  for (const Json& link : links) names.insert(nameOf(link));
  return names;
}

bool isBridge(const Json& link) { return link.value("linkinfo", Json::object()).value("info_kind", "") == "bridge"; }

bool up(const Json& link) {
  const Json flags = link.value("flags", Json::array());
  return std::ranges::find(flags, Json("UP")) != flags.end();
}

// The ports that the sandbox has and the appliance has not.
void removeOthers(const Json& links) {
  const std::set<std::string> wanted = namesOf(links);
  Lines lines;
  for (const std::string& name : namesOf(kernelLinks())) {
    if (name != "lo" && !wanted.contains(name)) lines.push_back("link del dev " + name);
  }
  runBatch(lines);
}

// A cable: the end that nobody sees keeps its carrier up.
void addCable(Lines& lines, const Json& link, size_t number) {
  std::string far = link.value("link", "");
  if (far.empty()) far = "far" + std::to_string(number);
  lines.push_back("link add " + nameOf(link) + " type veth peer name " + far);
  lines.push_back("link set dev " + far + " up");
}

void addVlan(const std::string& name) {
  const size_t dot = name.find('.');
  tools::runForOutput({"vconfig", "add", name.substr(0, dot), name.substr(dot + 1)}, true);
}

void makeLinks(const Json& links) {
  const std::set<std::string> present = namesOf(kernelLinks());
  Lines lines;
  for (size_t i = 0; i < links.size(); ++i) {
    const std::string name = nameOf(links[i]);
    if (present.contains(name) || name.find('.') != std::string::npos) continue;
    if (isBridge(links[i]))
      lines.push_back("link add " + name + " type bridge");
    else
      addCable(lines, links[i], i);
  }
  runBatch(lines);
  for (const std::string& name : namesOf(links)) {
    if (name.find('.') != std::string::npos && !present.contains(name)) addVlan(name);
  }
}

// A bridge has the least address of its ports by itself; it comes up behind them.
void setLinks(const Json& links) {
  Lines lines, bridges;
  for (const Json& link : links) {
    const std::string set = "link set dev " + nameOf(link) + " ";
    const std::string state = set + (up(link) ? "up" : "down");
    if (nameOf(link) == "lo" || isBridge(link)) {
      bridges.push_back(state);
      continue;
    }
    for (const std::string& what : {std::string("down"), "address " + link.value("address", ""),
                                    "mtu " + std::to_string(link.value("mtu", 1500))}) {
      lines.push_back(set + what);
    }
    if (link.contains("master")) lines.push_back(set + "master " + link.value("master", ""));
    lines.push_back(state);
  }
  lines.insert(lines.end(), bridges.begin(), bridges.end());
  runBatch(lines);
}

// "br0 inet 192.168.10.9/24 brd 192.168.10.255 scope global br0"
std::string addressLine(const std::string& text) {
  std::istringstream words(text);
  std::string link, family, local, word, line;
  words >> link >> family >> local;
  line = "addr replace " + local;
  while (words >> word && word != "scope") line += " " + word;
  words >> word;
  return line + " scope " + word + " dev " + link;
}

bool itsOwn(const std::string& route) {
  return std::ranges::any_of(kItsOwn, [&](const char* mark) { return route.find(mark) != std::string::npos; });
}

Lines routeLines(const Json& state, const std::string& section) {
  Lines lines;
  for (std::string route : linesOf(state, section)) {
    if (itsOwn(route)) continue;
    std::ranges::replace(route, '\\', ' ');
    lines.push_back("route add " + route);
  }
  return lines;
}

Lines ruleLines(const Json& state, const std::string& section) {
  Lines lines;
  for (const std::string& rule : linesOf(state, section)) {
    const size_t end = std::min(rule.find(':'), rule.size() - 1);
    const std::string number = rule.substr(0, end + 1);
    if (std::ranges::find(kItsOwnRules, number) != std::end(kItsOwnRules)) continue;
    lines.push_back("rule add pref " + number.substr(0, end) + rule.substr(end + 1));
  }
  return lines;
}

void makeFilter(const Json& state, const char* section, const char* program) {
  const Lines lines = linesOf(state, section);
  if (lines.empty()) return;
  writeLines(lines);
  tools::runForOutput({program, kBatch}, true);
}

struct Batch {
  const char* family;
  Lines lines;
};

Lines addressLines(const Json& state) {
  Lines lines;
  for (const std::string& line : linesOf(state, "addresses")) lines.push_back(addressLine(line));
  return lines;
}

// In the order in which they lean on one another.
std::vector<Batch> networkOf(const Json& state) {
  return {{kEither, addressLines(state)},
          {"-4", routeLines(state, "routes")},
          {"-4", ruleLines(state, "rules")},
          {"-6", routeLines(state, "routes6")},
          {"-6", ruleLines(state, "rules6")}};
}

Json lackedBy(const Json& wanted, const Json& made) {
  Json lacked = Json::object();
  for (const auto& [section, text] : wanted.items()) {
    const Lines there = linesOf(made, section);
    std::string missing;
    for (const std::string& line : linesOf(wanted, section)) {
      if (std::ranges::find(there, line) == there.end()) missing += line + "\n";
    }
    lacked[section] = missing;
  }
  return lacked;
}

// A line that ip does not understand ends its batch: what is behind it is done line by line.
void makeNetwork(const Json& state) {
  for (const Batch& batch : networkOf(state)) runBatch(batch.lines, batch.family);
  size_t count = 0;
  for (const Batch& left : networkOf(lackedBy(state, kernelState()))) {
    for (const std::string& line : left.lines) {
      if (count++ < kMostSingle) runBatch({line}, left.family);
    }
  }
}

}  // namespace

Json exportKernel() { return {{"links", kernelLinks()}, {"state", kernelState()}}; }

void importKernel(const Json& kernel) {
  const Json& links = kernel.at("links");
  const Json& state = kernel.at("state");
  removeOthers(links);
  makeLinks(links);
  setLinks(links);
  makeNetwork(state);
  makeFilter(state, "filter", "iptables-restore");
  makeFilter(state, "filter6", "ip6tables-restore");
}

std::vector<std::string> missingLines(const Json& kernel, const Json& state) {
  const Json lacked = lackedBy(kernel.at("state"), state);
  Lines lines;
  for (const auto& [section, text] : lacked.items()) {
    for (const std::string& line : linesOf(lacked, section)) lines.push_back(section + ": " + line);
  }
  return lines;
}

bool hasItsOwn(const Json& kernel, const Json& state) {
  return std::ranges::none_of(missingLines(kernel, state), itsOwn);
}

}  // namespace ctl::preview
