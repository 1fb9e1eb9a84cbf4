// Prints the offset table of the shared store.
#include <inttypes.h>
#include <stdio.h>

#include "kestrove/layout.h"
#include "kestrove/library.h"
#include "store/layout_table.h"

using namespace kestrove;

namespace {

void printIntroduction() {
  printf("# Layout of the shared store\n\n");
  printf("System V key %d, %d bytes. Written by `kestrove-layout`; a test compares it with the code.\n", SHM_KEY,
         SHM_SIZE);
  printf("Records are packed to 4 bytes in 32-bit and 64-bit programs alike. Layout hash: `%016" PRIx64 "`.\n",
         kestrove_layout_hash());
}

void printRecord(const LayoutRow& row) {
  printf("\n## %s, %" PRIu32 " bytes\n\n| Offset | Bytes | Member |\n|---:|---:|---|\n", row.record, row.bytes);
}

void printMember(const LayoutRow& row) {
  printf("| %" PRIu32 " | %" PRIu32 " | `%s` |\n", row.offset, row.bytes, row.member);
}

}  // namespace

int main() {
  printIntroduction();
  for (const LayoutRow& row : layoutRows()) row.member ? printMember(row) : printRecord(row);
  return fflush(stdout) == 0 ? 0 : 1;
}
