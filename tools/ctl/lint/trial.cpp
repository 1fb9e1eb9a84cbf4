// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/lint/trial.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/session.h"

namespace ctl::lint {
namespace {

constexpr size_t kLongestText = 256;

#define PLACE(member) \
  Place { offsetof(ShmData, member), sizeof(ShmData::member) }

// Where keywords without rows set their values.
constexpr Place kWatched[] = {PLACE(config), PLACE(oldAdminUsername), PLACE(oldAdminPassword),
                              PLACE(ddupStartupOptions)};

char* at(const Place& place) { return reinterpret_cast<char*>(shm) + place.offset; }

// A value that sets every byte of the field, and nothing else: a switch that is off turns nothing else on.
std::string probeValue(const tools::ConfigKeyword& keyword) {
  switch (keyword.form) {
    case tools::ConfigForm::kNumber: return "1";
    case tools::ConfigForm::kSwitch: return "0";
    case tools::ConfigForm::kText: return std::string(kLongestText, 'x');
    case tools::ConfigForm::kAddress: return "1.2.3.4";
    case tools::ConfigForm::kRow: return "5";
  }
  return {};
}

// The longest run of bytes that are the same in both.
Place sameIn(const Place& range, const std::string& one, const std::string& other) {
  size_t first = 0;
  while (first < range.width && one[first] != other[first]) ++first;
  size_t end = first;
  while (end < range.width && one[end] == other[end]) ++end;
  return {range.offset + first, end - first};
}

}  // namespace

Trial::Trial(const std::string& scratch)
    : path_(scratch), fd_(open(scratch.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)) {
  if (fd_ == -1) throw systemRefusal(scratch, errno);
}

Trial::~Trial() { close(fd_); }

uint32_t Trial::read(std::string_view line) {
  const bool written =
      ftruncate(fd_, 0) == 0 && pwrite(fd_, line.data(), line.size(), 0) == static_cast<ssize_t>(line.size());
  shm_errno = SHM_OK;
  errno = 0;
  if (!written || load_shared_memory(path_.c_str()) < 0) throw systemRefusal(path_, errno != 0 ? errno : EIO);
  return shm_errno;
}

Place Trial::placeOf(const tools::ConfigKeyword& keyword) {
  auto [known, fresh] = places_.try_emplace(keyword.name);
  if (fresh) known->second = probe(std::string(keyword.name) + " " + probeValue(keyword));
  return known->second;
}

Place Trial::probe(const std::string& line) {
  const ManagementAddress entry = manAddrEnt;
  std::string before[std::size(kWatched)], zeros[std::size(kWatched)], ones[std::size(kWatched)];
  auto readOnto = [&](int byte, std::string* after) {
    for (const Place& range : kWatched) memset(at(range), byte, range.width);
    manAddrEnt = {};
    read(line);
    for (const Place& range : kWatched) *after++ = bytesAt(range);
  };
  for (size_t i = 0; i < std::size(kWatched); ++i) before[i] = bytesAt(kWatched[i]);
  readOnto(0, zeros);
  readOnto(0xFF, ones);
  Place found;
  for (size_t i = 0; i < std::size(kWatched); ++i) {
    const Place same = sameIn(kWatched[i], zeros[i], ones[i]);
    if (same.width > found.width) found = same;
    putBytes(kWatched[i], before[i]);
  }
  manAddrEnt = entry;
  return found;
}

std::string Trial::bytesAt(const Place& place) { return {at(place), place.width}; }

void Trial::putBytes(const Place& place, const std::string& bytes) { memcpy(at(place), bytes.data(), place.width); }

}  // namespace ctl::lint
