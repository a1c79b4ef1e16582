// The parsers that this system owns, each as a function that eats any bytes.
//
// Built with clang they are libFuzzer programs (target fuzz_NAME); everywhere a test replays a handful of
// inputs.
#pragma once

#include <string_view>

namespace orvane_fuzz {

// Tokenizer, statement check, translation and SELECT reader. The first byte says how much of the rest is a
// value.
void SqlText(std::string_view bytes);
void ConnectionString(std::string_view bytes);
void Criterion(std::string_view bytes);
void MailAddresses(std::string_view bytes);

}  // namespace orvane_fuzz
