// Lines of the archive job's run log.
#include "jobs/archive/log_line.hpp"

#include <gtest/gtest.h>

#include "tests/support/test_runtime.hpp"

namespace orvane_test {
namespace {

using OrvaneProcess::ArchiveLogLine;

class ArchiveLogLineTest : public ::testing::Test {
 protected:
  TestRuntime test;
};

TEST_F(ArchiveLogLineTest, AMessageStandsBehindTheTimestamp) {
  EXPECT_EQ(ArchiveLogLine("Archiving Process ended."), "7-26-2004 09:05:03  : Archiving Process ended.");
}

TEST_F(ArchiveLogLineTest, AnAsteriskBeforeAWordIsKeptBehindTheTimestamp) {
  EXPECT_EQ(ArchiveLogLine("* ended"), "7-26-2004 09:05:03  : * ended");
}

TEST_F(ArchiveLogLineTest, BlanksAroundAMessageAreKept) {
  EXPECT_EQ(ArchiveLogLine(" could not be created/loaded "),
            "7-26-2004 09:05:03  :  could not be created/loaded ");
}

TEST_F(ArchiveLogLineTest, ATabIsText) {
  EXPECT_EQ(ArchiveLogLine("\t"), "7-26-2004 09:05:03  : \t");
}

TEST_F(ArchiveLogLineTest, AsterisksBlanksOrNothingHaveNoTimestamp) {
  for (const std::string ruler : {"********", "** **", "   ", ""}) EXPECT_EQ(ArchiveLogLine(ruler), ruler);
}

}  // namespace
}  // namespace orvane_test
