#include "common/run_log.hpp"

#include <gtest/gtest.h>

namespace OrvaneUtilities {
namespace {

TEST(RunLogTest, RulerIsFiftyThreeAsterisks) {
  EXPECT_EQ(RunLogRuler(), std::string(53, '*'));
}

TEST(RunLogTest, DatePartHasNoLeadingZeros) {
  EXPECT_EQ(RunLogDatePart(automation::DateTime::FromDate(2004, 7, 26)), "2004_7_26");
  EXPECT_EQ(RunLogDatePart(automation::DateTime::FromDate(2004, 7, 3)), "2004_7_3");
  EXPECT_EQ(RunLogDatePart(automation::DateTime::FromDate(2010, 12, 31)), "2010_12_31");
}

}  // namespace
}  // namespace OrvaneUtilities
