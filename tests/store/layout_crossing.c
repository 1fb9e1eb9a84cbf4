/* SPDX-License-Identifier: Apache-2.0 */
/* Fills every field of the segment, or checks what another program filled in. Built for both widths: what one writes
   the other must find. */
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/shm.h>

#include "kestrove/layout.h"

typedef void (*FieldVisitor)(const char* record, const char* member, void* field, size_t bytes);

static FieldVisitor visitField;
static uint32_t fields;
static uint32_t wrong;

/* Byte i of field number n: differs from field to field and from byte to byte. */
static uint8_t byteOf(uint32_t n, size_t i) {
  uint32_t x = n * 2654435761u + (uint32_t)i * 40503u + 12345u;
  x ^= x >> 15;
  return (uint8_t)(x * 2246822519u >> 24);
}

static void fill(const char* record, const char* member, void* field, size_t bytes) {
  size_t i;
  (void)record;
  (void)member;
  for (i = 0; i < bytes; ++i) ((uint8_t*)field)[i] = byteOf(fields, i);
  ++fields;
}

static void check(const char* record, const char* member, void* field, size_t bytes) {
  size_t i;
  for (i = 0; i < bytes; ++i) {
    if (((uint8_t*)field)[i] == byteOf(fields, i)) continue;
    if (wrong++ < 20) printf("field %u, %s.%s, byte %zu differs\n", fields, record, member, i);
    break;
  }
  ++fields;
}

#define RECORD(record, bytes) static void visit##record(record* r) {
#define FIELD(record, member, offset, bytes) visitField(#record, #member, (void*)&r->member, sizeof r->member);
#define TABLE(record, member, offset, bytes, entry)                                 \
  {                                                                                 \
    entry* first = (entry*)(void*)&r->member;                                       \
    size_t i;                                                                       \
    for (i = 0; i < sizeof r->member / sizeof(entry); ++i) visit##entry(first + i); \
  }
#define END(record) }
#include "store/layout.def"

/* fill: writes every field. spoil: the same, with one byte wrong. check: reads and compares. */
int main(int argc, char** argv) {
  int spoiling = argc == 2 && strcmp(argv[1], "spoil") == 0;
  int filling = spoiling || (argc == 2 && strcmp(argv[1], "fill") == 0);
  int id = shmget(SHM_KEY, SHM_SIZE, filling ? IPC_CREAT | 0666 : 0);
  void* segment = id == -1 ? (void*)-1 : shmat(id, NULL, 0);
  if (segment == (void*)-1) {
    perror("layout-crossing");
    return 2;
  }
  visitField = filling ? fill : check;
  visitShmData((ShmData*)segment);
  if (spoiling) ++((ShmData*)segment)->filterTable.rule[SHM_RULES - 1].dstAddr6[15];
  printf("%d bits: %u fields %s, %u differ\n", (int)(8 * sizeof(void*)), fields, filling ? "filled" : "read", wrong);
  return wrong ? 1 : 0;
}
