// SPDX-License-Identifier: Apache-2.0
// The segment, compared with what it held at the start and put back, page by page.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/shm.h>

#include "store/layout_table.h"
#include "tests/explore/world.h"

namespace kestrove::explore {
namespace {

constexpr size_t kPage = 4096;
constexpr size_t kMostDifferences = 40;

size_t pageSize(size_t at) { return at + kPage <= SHM_SIZE ? kPage : SHM_SIZE - at; }

const LayoutRow* rowAt(const char* record, size_t offset) {
  for (const LayoutRow& row : layoutRows()) {
    bool inside = row.member && offset >= row.offset && offset < row.offset + row.bytes;
    if (inside && strcmp(row.record, record) == 0) return &row;
  }
  return nullptr;
}

// The member that a byte of the segment belongs to, with the place in it.
std::string nameOf(size_t offset) {
  const LayoutRow* row = rowAt("ShmData", offset);
  if (!row) return std::to_string(offset);
  size_t within = offset - row->offset;
  const LayoutRow* field = strcmp(row->member, "config") == 0 ? rowAt("ConfigRecord", within) : nullptr;
  if (field) return std::string(field->member) + "+" + std::to_string(within - field->offset);
  return std::string(row->member) + "+" + std::to_string(within);
}

}  // namespace

bool StoreImage::attach() {
  if (now_) return true;
  int id = shmget(SHM_KEY, 1, 0);
  void* address = id == -1 ? reinterpret_cast<void*>(-1) : shmat(id, nullptr, 0);
  if (address != reinterpret_cast<void*>(-1)) now_ = static_cast<ShmData*>(address);
  return now_ != nullptr;
}

void StoreImage::detach() {
  if (now_) shmdt(now_);
  now_ = nullptr;
}

void StoreImage::keep() {
  const char* bytes = reinterpret_cast<const char*>(now_);
  base_.assign(bytes, bytes + SHM_SIZE);
}

void StoreImage::destroy() {
  detach();
  int id = shmget(SHM_KEY, 1, 0);
  if (id != -1) shmctl(id, IPC_RMID, nullptr);
}

void StoreImage::recreate() {
  if (now_ && shmget(SHM_KEY, 1, 0) != -1) return;
  destroy();
  if (shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | IPC_EXCL | 0666) == -1 || !attach()) {
    perror("explore: segment");
    exit(2);
  }
  mark();
}

// The uptime goes on between two orders.
uint64_t StoreImage::mark() {
  const auto* base = reinterpret_cast<const ShmData*>(base_.data());
  now_->statistics.counterLastResetTime = base->statistics.counterLastResetTime;
  const char* bytes = reinterpret_cast<const char*>(now_);
  uint64_t mark = 1;
  changed_.clear();
  for (size_t at = 0; at < SHM_SIZE; at += kPage) {
    if (memcmp(bytes + at, base_.data() + at, pageSize(at)) == 0) continue;
    changed_.push_back(at);
    mark = markOf(bytes + at, pageSize(at), mark ^ at);
  }
  return mark;
}

std::string StoreImage::differences() const {
  const char* bytes = reinterpret_cast<const char*>(now_);
  std::string text;
  size_t found = 0;
  for (size_t at = 0; at + sizeof(uint32_t) <= SHM_SIZE && found < kMostDifferences; at += sizeof(uint32_t)) {
    uint32_t now, before;
    memcpy(&now, bytes + at, sizeof now);
    memcpy(&before, base_.data() + at, sizeof before);
    if (now == before) continue;
    char line[64];
    snprintf(line, sizeof line, ": %08x, was %08x\n", now, before);
    text += nameOf(at) + line;
    ++found;
  }
  return text;
}

void StoreImage::restore() {
  char* bytes = reinterpret_cast<char*>(now_);
  for (size_t at : changed_) memcpy(bytes + at, base_.data() + at, pageSize(at));
  changed_.clear();
}

}  // namespace kestrove::explore
