// The number of the platform error that a call raises.
#pragma once

#include <cstdint>

#include "platform/automation/error.hpp"

namespace orvane_test {

// 0 when the call returns.
template <class Call>
std::int32_t ErrorNumberOf(const Call& call) {
  try {
    call();
  } catch (const automation::Error& error) {
    return error.Number();
  }
  return 0;
}

}  // namespace orvane_test
