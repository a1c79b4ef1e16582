// What the user component says when it fails.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/raised_error.hpp"

namespace orvane_test {

// The description of the component's error with this number, which the action must raise.
template <class Action>
std::string Failure(int number, Action action) {
  const automation::Error error = ErrorOf(action);
  EXPECT_EQ(error.Number(), number);
  EXPECT_EQ(error.Source(), "VnMembership.User");
  return error.Description();
}

}  // namespace orvane_test
