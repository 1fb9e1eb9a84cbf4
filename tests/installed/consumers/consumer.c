/* SPDX-License-Identifier: Apache-2.0 */
/* A program of somebody else, in C99 and as C++ from C++11 on: says what it runs with, and with a word looks at the
   store, too. Each thing that can be wrong is one sentence and an exit status of its own. */
#include <kestrove/kestrove.h>
#include <stdio.h>

int main(int count, char** words) {
  char message[KESTROVE_CHECK_BYTES];
  if (kestrove_check_headers(message, sizeof message) != 0) {
    fprintf(stderr, "%s: %s\n", words[0], message);
    return 3;
  }
  if (count == 1) {
    printf("%s in %d bits\n", kestrove_version(), (int)sizeof(void*) * 8);
    return 0;
  }
  if (shm_lock() != 0) {
    shm_perror(words[1]);
    return 4;
  }
  printf("%u\n", (unsigned)shm->operationalState);
  return shm_unlock() == 0 ? 0 : 4;
}
