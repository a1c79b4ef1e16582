// The parts of a bench program that are measured run in a process of their own each: the program calls
// itself.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace orvane_bench {

constexpr char kOwnSecondsLine[] = "own seconds: ";

// Runs the work, and writes how long it took by itself to standard output: without the process's start, its
// preparations and its end. `units` is how many rows, files or calls the work is about.
//
// The environment variable ORVANE_BENCH_SLOW="A,B" makes it A microseconds a unit and B nanoseconds a squared
// unit slower. The tests of the benches show with it that a slow job misses its target.
void Timed(std::int64_t units, const std::function<void()>& work);

// The same in processor time: for work that waits for nothing, so that what else the machine does counts
// less.
void TimedOnProcessor(std::int64_t units, const std::function<void()>& work);

constexpr char kSlowVariable[] = "ORVANE_BENCH_SLOW";

}  // namespace orvane_bench
