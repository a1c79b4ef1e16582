// The tests of the solve job in its whole suite; every engine's test program runs them all.
#pragma once

#include <gtest/gtest.h>

#include "tests/solve/whole_suite.hpp"

namespace orvane_test {

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
