// The parsers that this system owns, each as a function that takes any bytes.
//
// Built with clang they are libFuzzer programs (target fuzz_NAME); everywhere a test replays a corpus.
#pragma once

#include <cstdlib>
#include <string_view>

namespace orvane_fuzz {

// What must be true of any bytes.
inline void Require(bool condition) {
  if (!condition) std::abort();
}

// Tokenizer, statement check, translation and SELECT reader. The first byte says how much of the rest is a
// value.
void SqlText(std::string_view bytes);
void ConnectionString(std::string_view bytes);
void Criterion(std::string_view bytes);
void MailAddresses(std::string_view bytes);
void Ldif(std::string_view bytes);
void DistinguishedName(std::string_view bytes);
void SiteConfiguration(std::string_view bytes);
void FtpListing(std::string_view bytes);
void FtpAddress(std::string_view bytes);

}  // namespace orvane_fuzz
