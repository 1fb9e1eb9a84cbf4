// A front end in C++: changes a setting that logs an event, and sees the event counted.
#include <kestrove/kestrove.h>

#include <cstdio>

int main() {
  const int before = getEventCount();
  if (setKestroveConfigItem(9, SHM_OFF, 4, "admin") != 0) return shm_perror("compression"), 1;
  const int after = getEventCount();
  std::printf("%zu bits, %d new event\n", 8 * sizeof(void*), after - before);
  return after == before + 1 ? 0 : 1;
}
