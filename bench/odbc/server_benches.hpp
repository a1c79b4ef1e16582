// The benchmarks on database servers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/product/servers.hpp"
#include "bench/support/bench.hpp"

namespace orvane_bench {

// Fills an empty database with prospects, of whom 30 % are dormant at a limit of 30 days.
void FillProspects(const BenchDatabase& database, const std::string& server, std::int64_t rows);
bool IsDormantRow(std::int64_t row);

// The job against a C program that sends the same single-row deletes over the same driver, and, on MariaDB,
// against pt-archiver where it is installed. Without a target on a server that does not wait for the disk.
void MeasureDormantExpiry(Bench& bench, const BenchServer& server, std::int64_t rows, bool durable);

// Opening and closing a connection through the pool against opening and closing a physical one.
void MeasurePool(Bench& bench, const BenchServer& server);

// A localized text through a connection of its own against the bare prepared query.
void MeasureLookups(Bench& bench, const BenchServer& server);

// A walk through a keyset cursor, and its memory.
void MeasureWalk(Bench& bench, const BenchServer& server, std::int64_t rows);

// The parts that run in processes of their own.
using Words = std::vector<std::string>;
void RunDormantJob(const Words& words);
void OpenPooled(const Words& words);
void OpenPhysical(const Words& words);
void LookUp(const Words& words);
void LookUpBare(const Words& words);
void RunWalk(const Words& words);

}  // namespace orvane_bench
