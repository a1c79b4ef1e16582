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

TEST_F(ArchiveLogLineTest, ControlCharactersBecomeQuestionMarks) {
  EXPECT_EQ(ArchiveLogLine("Archive Files ann\r\n7-26-2004 09:05:03  : Archiving Process ended. edited"),
            "7-26-2004 09:05:03  : Archive Files ann??7-26-2004 09:05:03  : Archiving Process ended. edited");
  EXPECT_EQ(ArchiveLogLine(std::string("\0a\x1f\x7f\x1b[2J", 8)), "7-26-2004 09:05:03  : ?a???[2J");
  EXPECT_EQ(ArchiveLogLine("\t"), "7-26-2004 09:05:03  : ?");
  EXPECT_EQ(ArchiveLogLine("***\n***"), "7-26-2004 09:05:03  : ***?***") << "no ruler";
}

TEST_F(ArchiveLogLineTest, ControlCharactersBeyondAsciiAreOneQuestionMarkEach) {
  EXPECT_EQ(ArchiveLogLine("a\xC2\x85"
                           "b\xC2\x9B"
                           "c"),
            "7-26-2004 09:05:03  : a?b?c");
}

TEST_F(ArchiveLogLineTest, LettersBeyondAsciiStay) {
  EXPECT_EQ(ArchiveLogLine("J\u00fcrgen \u20ac \u00a0"), "7-26-2004 09:05:03  : J\u00fcrgen \u20ac \u00a0");
}

TEST_F(ArchiveLogLineTest, AsterisksBlanksOrNothingHaveNoTimestamp) {
  for (const std::string ruler : {"********", "** **", "   ", ""}) EXPECT_EQ(ArchiveLogLine(ruler), ruler);
}

}  // namespace
}  // namespace orvane_test
