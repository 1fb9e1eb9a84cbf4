// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/trace/memory.h"

#include <sys/uio.h>

#include <cstring>

namespace ctl {
namespace {

constexpr size_t kPiece = 256;  // divides the size of a page, so that no aligned piece reaches into a missing one
constexpr size_t kLongestText = 128 * 1024;
constexpr size_t kMostTexts = 4096;

}  // namespace

bool Memory::read(uint64_t address, void* out, size_t size) const {
  iovec here = {out, size};
  iovec there = {reinterpret_cast<void*>(static_cast<uintptr_t>(address)), size};
  return process_vm_readv(process_, &here, 1, &there, 1, 0) == static_cast<ssize_t>(size);
}

std::string Memory::text(uint64_t address) const {
  std::string whole;
  while (whole.size() < kLongestText) {
    char piece[kPiece];
    size_t size = kPiece - address % kPiece;
    if (!read(address, piece, size)) break;
    size_t length = strnlen(piece, size);
    whole.append(piece, length);
    if (length < size) break;
    address += size;
  }
  return whole;
}

std::vector<std::string> Memory::texts(uint64_t address) const {
  std::vector<std::string> all;
  uintptr_t place = 0;
  while (all.size() < kMostTexts && read(address, place) && place != 0) {
    all.push_back(text(place));
    address += sizeof place;
  }
  return all;
}

}  // namespace ctl
