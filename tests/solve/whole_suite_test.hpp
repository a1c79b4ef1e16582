// The tests of the solve job in its whole suite; every engine's test program runs them all.
#pragma once

#include <gtest/gtest.h>

#include "tests/solve/whole_suite.hpp"

namespace orvane_test {

inline constexpr const char* kLongAgo = "1999-12-31 23:59:59";
// What stands before an entry of Q_TEXT and A_TEXT.
inline constexpr const char* kPost = "\x01\x02\x03\x04 2004-07-20 10:00:00.000";
inline constexpr const char* kAnswer = "\x04\x03\x02\x01 2004-07-21 11:30:00.000";

// The engines of this test program.
std::vector<SuiteTablesMaker> SuiteTablesMakers();

class WholeSuiteTest : public testing::TestWithParam<SuiteTablesMaker> {
 protected:
  WholeSuite suite_{GetParam().make()};
};

inline std::string NameOfTables(const testing::TestParamInfo<SuiteTablesMaker>& info) {
  return info.param.name;
}

}  // namespace orvane_test
