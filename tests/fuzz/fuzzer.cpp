// One libFuzzer program: ORVANE_FUZZ_TARGET is the function that it calls.
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/fuzz_targets.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const void* bytes = data;
  orvane_fuzz::ORVANE_FUZZ_TARGET({static_cast<const char*>(bytes), size});
  return 0;
}
