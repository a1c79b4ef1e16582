// The history of a question, as the reminders' job takes it apart.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvane_bench {

// Puts a customer "jdoe" in the place of the directory. REQUIRES: a BenchSuite is current.
void PutCustomerInPlaceOfDirectory();

// Takes the history of the question apart and returns how many entries it has.
std::size_t SeparateHistory(std::int32_t questionId);

}  // namespace orvane_bench
