#include "platform/adodb/session/coarse_clock.hpp"

#include <ctime>

namespace ADODB::engine {

std::chrono::steady_clock::time_point CoarseNow() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  return std::chrono::steady_clock::time_point(std::chrono::seconds(time.tv_sec) +
                                               std::chrono::nanoseconds(time.tv_nsec));
}

}  // namespace ADODB::engine
