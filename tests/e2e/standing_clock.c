// Preloaded into a run: the clock by which cursors take rows for old, and descriptions of tables, stands still. The run
// asks its database the same, however slow the machine is.
#define _GNU_SOURCE
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

int clock_gettime(clockid_t clock, struct timespec* now) {
  const int result = (int)syscall(SYS_clock_gettime, clock, now);
  if (result == 0 && clock == CLOCK_MONOTONIC_COARSE) *now = (struct timespec){1000, 0};
  return result;
}
