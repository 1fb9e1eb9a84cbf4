// SPDX-License-Identifier: Apache-2.0
// What this program gives back is overwritten first: a request may have had a password, and its copies are where
// texts, values of JSON and functions put them.
#include <malloc.h>
#include <string.h>

#include <cstdlib>
#include <new>

namespace {

void giveBack(void* place) {
  if (place) explicit_bzero(place, malloc_usable_size(place));
  free(place);
}

}  // namespace

void* operator new(size_t size) {
  if (void* place = malloc(size > 0 ? size : 1)) return place;
  throw std::bad_alloc();
}
void* operator new[](size_t size) { return operator new(size); }
void operator delete(void* place) noexcept { giveBack(place); }
void operator delete[](void* place) noexcept { giveBack(place); }
void operator delete(void* place, size_t) noexcept { giveBack(place); }
void operator delete[](void* place, size_t) noexcept { giveBack(place); }
