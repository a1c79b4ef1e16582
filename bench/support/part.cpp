#include "bench/support/part.hpp"

#include <time.h>

#include <cstdio>
#include <cstdlib>

namespace orvane_bench {
namespace {

double Now(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// In processor time, so that it counts on either clock.
void SlowDown(std::int64_t units) {
  const char* setting = std::getenv(kSlowVariable);
  if (setting == nullptr) return;
  double eachMicroseconds = 0;
  double squaredNanoseconds = 0;
  std::sscanf(setting, "%lf,%lf", &eachMicroseconds, &squaredNanoseconds);
  const auto count = static_cast<double>(units);
  const double end = Now(CLOCK_PROCESS_CPUTIME_ID) + count * eachMicroseconds / 1e6 +
                     count * count * squaredNanoseconds / 1e9;
  while (Now(CLOCK_PROCESS_CPUTIME_ID) < end) {
  }
}

void TimedBy(clockid_t clock, std::int64_t units, const std::function<void()>& work) {
  const double start = Now(clock);
  work();
  SlowDown(units);
  std::printf("%s%.9f\n", kOwnSecondsLine, Now(clock) - start);
}

}  // namespace

void Timed(std::int64_t units, const std::function<void()>& work) {
  TimedBy(CLOCK_MONOTONIC, units, work);
}

void TimedOnProcessor(std::int64_t units, const std::function<void()>& work) {
  TimedBy(CLOCK_PROCESS_CPUTIME_ID, units, work);
}

}  // namespace orvane_bench
