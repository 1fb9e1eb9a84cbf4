// SPDX-License-Identifier: Apache-2.0
// A set request: its first line PLACE TYPE, the place as numbers with dots and the type as a number, then the value, of
// a number in digits. What is refused leaves the store as it was.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>

#include "fuzz/fuzz_fixture.h"
#include "kestrove/kestrove.h"
#include "tools/snmp/setting.h"
#include "tools/snmp/wire.h"

namespace {

struct Request {
  snmp::Place place;
  int type = 0;
  std::string value;
};

Request requestOf(const std::string& text) {
  Request request;
  std::istringstream stream(text);
  std::string line;
  std::getline(stream, line);
  std::replace(line.begin(), line.end(), '.', ' ');
  std::istringstream words(line);
  for (uint32_t word; words >> word;) request.place.push_back(word);
  if (!request.place.empty()) {
    request.type = static_cast<int>(request.place.back());
    request.place.pop_back();
  }
  std::ostringstream rest;
  rest << stream.rdbuf();
  request.value = rest.str();
  if (request.type != snmp::kInteger && request.type != snmp::kUnsigned) return request;
  const long number = strtol(request.value.c_str(), nullptr, 10);
  request.value.assign(reinterpret_cast<const char*>(&number), sizeof number);
  return request;
}

snmp::Refused answer(const Request& request) {
  static const snmp::Tree tree;
  const auto found = tree.at(request.place, *shm);
  tree.behind(request.place, *shm);
  if (!found) return snmp::kNoCreation;
  const auto* bytes = reinterpret_cast<const uint8_t*>(request.value.data());
  const snmp::Refused refused = check(*found, request.type, request.value.size(), *shm);
  return refused ? refused : set(*found, {bytes, request.value.size()}, SHM_SOURCE_SNMP_V2);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kestrove::fuzzing::freshStore();
  const Request request = requestOf(std::string(reinterpret_cast<const char*>(data), size));
  shm->config.snmpOperState = request.value.empty() ? SHM_OFF : SHM_ON;
  shm->config.minMtu = 576;
  static const auto before = std::make_unique<ShmData>();
  memcpy(before.get(), shm, sizeof *shm);
  if (answer(request) != snmp::kNoError && memcmp(before.get(), shm, sizeof *shm) != 0) abort();
  kestrove::fuzzing::checkStore();
  return 0;
}
