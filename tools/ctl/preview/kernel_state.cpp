// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/preview/kernel_state.h"

#include <unistd.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <vector>

#include "tools/common/program.h"

namespace ctl::preview {
namespace {

using Lines = std::vector<std::string>;

std::string outputOf(const std::vector<std::string>& line) { return tools::runForOutput(line, true).text; }

Lines linesOf(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string textOf(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// One blank between the words, without the words that come and go.
std::string steady(const std::string& line) {
  std::istringstream words(line);
  std::string text;
  for (std::string word; words >> word;) {
    if (word == "expires")
      words >> word;
    else if (word != "tentative" && word != "linkdown" && word != "dead")
      text += (text.empty() ? "" : " ") + word;
  }
  return text;
}

// "2: eth0    inet 10.0.0.1/8 scope global eth0\       valid_lft forever preferred_lft forever"
std::string address(const std::string& line) {
  const size_t start = std::min(line.find(": ") + 2, line.size());
  return steady(line.substr(start, line.find('\\') - start));
}

bool comment(const std::string& line) { return line.starts_with('#'); }

// ":INPUT ACCEPT [12:345]"
std::string withoutCounters(const std::string& line) { return line.substr(0, line.find(" [")); }

struct Section {
  const char* name;
  std::vector<std::string> line;
  std::string (*change)(const std::string&);
  bool sorted;
};

const std::vector<Section>& sections() {
  static const std::vector<Section> all = {
      {"addresses", {"ip", "-o", "addr"}, address, true},
      {"routes", {"ip", "-4", "-o", "route", "show", "table", "all"}, steady, true},
      {"routes6", {"ip", "-6", "-o", "route", "show", "table", "all"}, steady, true},
      {"rules", {"ip", "-4", "rule"}, steady, false},
      {"rules6", {"ip", "-6", "rule"}, steady, false},
      {"filter", {"iptables-save"}, withoutCounters, false},
      {"filter6", {"ip6tables-save"}, withoutCounters, false}};
  return all;
}

std::string sectionText(const Section& section) {
  Lines lines = linesOf(outputOf(section.line));
  std::erase_if(lines, comment);
  for (std::string& line : lines) line = section.change(line);
  if (section.sorted) std::ranges::sort(lines);
  return textOf(lines);
}

bool up(const Json& link) {
  const Json flags = link.value("flags", Json::array());
  return std::ranges::find(flags, Json("UP")) != flags.end();
}

std::string linkText(const Json& links) {
  Lines lines;
  for (const Json& link : links) {
    lines.push_back(link.value("ifname", "") + (up(link) ? " up" : " down") + " mtu " +
                    std::to_string(link.value("mtu", 0)));
  }
  std::ranges::sort(lines);
  return textOf(lines);
}

std::string kindOf(const Json& link) { return link.value("linkinfo", Json::object()).value("info_kind", ""); }

// "br0: eth0 eth1"
std::string bridgeText(const Json& links) {
  std::map<std::string, std::string> ports;
  for (const Json& link : links) {
    if (kindOf(link) == "bridge") ports[link.value("ifname", "")];
    if (link.contains("master")) ports[link.value("master", "")] += " " + link.value("ifname", "");
  }
  std::string text;
  for (const auto& [bridge, names] : ports) text += bridge + ":" + names + "\n";
  return text;
}

}  // namespace

Json kernelLinks() {
  Json links = Json::parse(outputOf({"ip", "-d", "-j", "link"}), nullptr, false);
  return links.is_array() ? links : Json::array();
}

Json kernelState() {
  const Json links = kernelLinks();
  Json state = {{"links", linkText(links)}, {"bridges", bridgeText(links)}};
  for (const Section& section : sections()) state[section.name] = sectionText(section);
  return state;
}

Json settledKernelState(const std::function<bool(const Json& state)>& there) {
  constexpr int kMostLooks = 40;
  constexpr useconds_t kBetween = 50'000;
  Json state = kernelState();
  for (int i = 0; i < kMostLooks; ++i) {
    usleep(kBetween);
    Json again = kernelState();
    const bool steady = again == state;
    state = std::move(again);
    if (steady && there(state)) break;
  }
  return state;
}

}  // namespace ctl::preview
