// The platform error that a call raises.
#pragma once

#include <gtest/gtest.h>

#include "platform/automation/error.hpp"

namespace orvane_test {

// Fails the test when nothing is raised.
template <class Action>
automation::Error ErrorOf(Action&& action) {
  try {
    action();
  } catch (const automation::Error& error) {
    return error;
  }
  ADD_FAILURE() << "nothing was raised";
  return automation::Error(0, {}, {});
}

}  // namespace orvane_test
