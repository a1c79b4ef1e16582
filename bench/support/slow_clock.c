/* Loaded before a program that callgrind runs, which then takes some fifty times as long: the clock by which the cursors
 * take rows for old goes as much slower. Without it rows are read again and again that a run in its own time reads
 * once, more of them the busier the machine is, and the counts tell of that. */
#define _GNU_SOURCE
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

int clock_gettime(clockid_t clock, struct timespec* time) {
  enum { TIMES_SLOWER = 50, NANOSECONDS = 1000000000 };
  const int status = (int)syscall(SYS_clock_gettime, clock, time);
  if (status != 0 || clock != CLOCK_MONOTONIC_COARSE) return status;
  const long long slow = ((long long)time->tv_sec * NANOSECONDS + time->tv_nsec) / TIMES_SLOWER;
  time->tv_sec = slow / NANOSECONDS;
  time->tv_nsec = slow % NANOSECONDS;
  return 0;
}
