// The time for questions that are asked thousands of times a second and need no precision.
#pragma once

#include <chrono>
#include <functional>

namespace ADODB::engine {

using Clock = std::function<std::chrono::steady_clock::time_point()>;

// The steady clock's time some milliseconds ago, which costs next to nothing to ask.
std::chrono::steady_clock::time_point CoarseNow();

}  // namespace ADODB::engine
