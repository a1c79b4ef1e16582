// Values as bytes, for keys and rows that wait outside of the working set.
#pragma once

#include <string>

#include "platform/automation/variant.hpp"

namespace ADODB::engine {

using Row = std::vector<automation::Variant>;

void Encode(const automation::Variant& value, std::string& bytes);
// Reads one value and moves `at` behind it.
void Decode(const char*& at, automation::Variant& value);

// An estimate of the memory that a row takes.
std::size_t MemoryOf(const Row& row);

}  // namespace ADODB::engine
