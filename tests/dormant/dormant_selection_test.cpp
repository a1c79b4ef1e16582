// Which prospects go and which stay.
#include <gmock/gmock.h>

#include "platform/automation/safe_point.hpp"
#include "tests/dormant/dormant_fixture.hpp"

namespace orvane_test {
namespace {

using Names = std::vector<std::string>;

TEST_F(DormantUserExpiryTest, DeletesWhoStayedAwayLongerThanTheLimit) {
  SetLimit("'30'");
  AddProspect("gone", "'2004-06-26 09:05:02'", "0");
  AddProspect("fresh", "'2004-07-20 12:00:00'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"fresh"});
}

TEST_F(DormantUserExpiryTest, KeepsAProspectWhoseExpiryMomentEqualsNow) {
  SetLimit("'30'");
  AddProspect("one second before", "'2004-06-26 09:05:02'", "0");
  AddProspect("equal", "'2004-06-26 09:05:03'", "0");
  AddProspect("one second after", "'2004-06-26 09:05:04'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), (Names{"equal", "one second after"}));
}

// A date that another program has written as a text is read as the runtime's locale writes dates.
TEST_F(DormantUserExpiryTest, LastVisitsThatAreTextsAreReadByTheLocale) {
  SetLimit("'30'");
  AddProspect("4 July, or 7 April", "'07/04/2004 12:00:00'", "0");
  AddProspect("1 January", "'1/1/2004'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"4 July, or 7 April"});
  environment_.locale->dayFirst = true;
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{});
}

TEST_F(DormantUserExpiryTest, TheMomentOfTheRunHasNoFractionOfASecond) {
  environment_.now =
      automation::DateTime::FromUnixMicroseconds(environment_.now.UnixMicroseconds() + 900'000);
  SetLimit("'30'");
  AddProspect("equal to the second", "'2004-06-26 09:05:03'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"equal to the second"});
}

TEST_F(DormantUserExpiryTest, KeepsWhoHasPendingQuestionsHoweverOld) {
  SetLimit("'1'");
  AddProspect("waiting", "'1990-01-01 00:00:00'", "1");
  AddProspect("many", "'1990-01-01 00:00:00'", "2147483647");
  AddProspect("none", "'1990-01-01 00:00:00'", "0");
  AddProspect("fewer than none", "'1990-01-01 00:00:00'", "-1");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), (Names{"waiting", "many"}));
}

TEST_F(DormantUserExpiryTest, KeepsWhoseNumberOfPendingQuestionsIsNull) {
  SetLimit("'1'");
  AddProspect("unknown", "'1990-01-01 00:00:00'", "NULL");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"unknown"});
}

TEST_F(DormantUserExpiryTest, KeepsWhoseLastVisitIsNullAndGoesOn) {
  SetLimit("'1'");
  AddProspect("never seen", "NULL", "0");
  AddProspect("never seen, waiting", "NULL", "3");
  AddProspect("all null", "NULL", "NULL");
  AddProspect("gone", "'1990-01-01 00:00:00'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), (Names{"never seen", "never seen, waiting", "all null"}));
}

TEST_F(DormantUserExpiryTest, LimitZeroDeletesEveryVisitInThePast) {
  SetLimit("'0'");
  AddProspect("a second ago", "'2004-07-26 09:05:02'", "0");
  AddProspect("now", "'2004-07-26 09:05:03'", "0");
  AddProspect("later today", "'2004-07-26 17:00:00'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), (Names{"now", "later today"}));
}

TEST_F(DormantUserExpiryTest, NegativeLimitMovesTheExpiryMomentBack) {
  SetLimit("'-2'");
  AddProspect("tomorrow", "'2004-07-27 09:05:03'", "0");
  AddProspect("in two days, a second less", "'2004-07-28 09:05:02'", "0");
  AddProspect("in two days", "'2004-07-28 09:05:03'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"in two days"});
}

TEST_F(DormantUserExpiryTest, CountsCalendarDaysAcrossMonthsAndLeapDays) {
  environment_.now = automation::DateTime::FromParts({.year = 2004, .month = 3, .day = 1, .hour = 12});
  SetLimit("'2'");
  AddProspect("28 February", "'2004-02-28 12:00:00'",
              "0");  // expires on 1 March, 12:00:00: 2004 is a leap year
  AddProspect("28 February, earlier", "'2004-02-28 11:59:59'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"28 February"});
}

TEST_F(DormantUserExpiryTest, DateWithoutATimeCountsFromMidnight) {
  SetLimit("'0'");
  AddProspect("today", "'2004-07-26'", "0");
  AddProspect("tomorrow", "'2004-07-27'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"tomorrow"});
}

TEST_F(DormantUserExpiryTest, KeepsWhoseExpiryMomentLiesBeyondTheCalendar) {
  SetLimit("'2147483647'");
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  AddProspect("never expires", "'9999-12-31 23:59:59'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), (Names{"old", "never expires"}));
}

TEST_F(DormantUserExpiryTest, ExpiryMomentOnTheCalendarsLastDayIsStillAMoment) {
  SetLimit("'1'");
  AddProspect("last day but one", "'9999-12-30 23:59:59'", "0");
  AddProspect("last day", "'9999-12-31 00:00:00'", "0");
  AddProspect("gone", "'1990-01-01 00:00:00'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), (Names{"last day but one", "last day"}));
}

TEST_F(DormantUserExpiryTest, ExpiryMomentBeforeTheCalendarEndsTheRunWithoutDeleting) {
  SetLimit("'-2147483648'");
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  EXPECT_EQ(Expire(), 5);
  EXPECT_EQ(Prospects(), Names{"old"});
}

TEST_F(DormantUserExpiryTest, RoundsALimitWithAFractionHalfToEven) {
  SetLimit("'2.5'");
  AddProspect("two days", "'2004-07-24 09:05:02'", "0");
  AddProspect("less", "'2004-07-24 09:05:03'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"less"});
}

TEST_F(DormantUserExpiryTest, TouchesNothingWhenThereAreNoProspects) {
  SetLimit("'30'");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Log(), std::string(kStartBanner) + std::string(kStopLine));
}

TEST_F(DormantUserExpiryTest, DeletesAmongManyProspectsExactlyTheDormantOnes) {
  SetLimit("'30'");
  Names kept;
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "p" + std::to_string(i);
    const bool dormant = i % 10 < 3;
    AddProspect(name, dormant ? "'2004-01-01 00:00:00'" : "'2004-07-25 00:00:00'", "0");
    if (!dormant) kept.push_back(name);
  }
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), kept);
}

TEST_F(DormantUserExpiryTest, ReadsTheParameterAndTheProspectsWithTheirOwnStatements) {
  SetLimit("'30'");
  EXPECT_EQ(Expire(), 0);
  const std::vector<OpenedRecordset> expected = {
      {"Select PARAM_VALUE from PARAMETERS where PARAM_NAME = 'MAXDORMANCYTIME'", ADODB::CursorType::Keyset,
       ADODB::LockType::Optimistic, -1},
      {"SELECT * FROM PROSPECT", ADODB::CursorType::Keyset, ADODB::LockType::Optimistic, -1}};
  EXPECT_EQ(adodb_->recordsets, expected);
}

TEST_F(DormantUserExpiryTest, TakesTheMomentOnceForAllProspects) {
  SetLimit("'0'");
  AddProspect("seen after the run began", "'2004-07-26 09:30:00'", "0");
  adodb_->before = [this](std::string_view step) {
    if (step == "Recordset.MoveNext" || step == "Field.Value") {
      environment_.now = automation::DateTime::FromDate(2004, 7, 27);
    }
  };
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"seen after the run began"});
}

TEST_F(DormantUserExpiryTest, ChangesNoOtherTable) {
  database_.Run("CREATE TABLE QUESTIONS (Q_ID INTEGER PRIMARY KEY, Q_ORIGINATOR VARCHAR(255))");
  database_.Run("INSERT INTO QUESTIONS VALUES (1, 'gone')");
  SetLimit("'30'");
  AddProspect("gone", "'1990-01-01 00:00:00'", "0");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(database_.Rows("SELECT Q_ID FROM QUESTIONS"), Names{"1"});
  EXPECT_EQ(database_.Rows("SELECT PARAM_VALUE FROM PARAMETERS"), Names{"30"});
}

TEST_F(DormantUserExpiryTest, ARunMayBeEndedAfterEachProspect) {
  SetLimit("'30'");
  AddProspect("one", "'1990-01-01 00:00:00'", "0");
  AddProspect("two", "'2004-07-20 12:00:00'", "0");
  AddProspect("three", "'1990-01-01 00:00:00'", "0");
  std::vector<Names> seen;
  const automation::SafePoints listening([&] { seen.push_back(Prospects()); });
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(seen, (std::vector<Names>{{"two", "three"}, {"two", "three"}, {"two"}}));
}

TEST_F(DormantUserExpiryTest, KeepsWhoCameBackWhileTheOneBeforeWasDeleted) {
  for (const char* change : {"LASTVISITEDTIME = '2004-07-26 09:05:00'", "PENDINGQUESTIONS = 1"}) {
    database_.Run("DELETE FROM PROSPECT");
    SetLimit("'30'");
    AddProspect("first", "'2001-01-01 00:00:00'", "0");
    AddProspect("second", "'2001-01-01 00:00:00'", "0");
    int deletions = 0;
    adodb_->before = [&](std::string_view step) {
      if (step != "Recordset.Delete" || ++deletions != 1) return;
      database_.Run(std::string("UPDATE PROSPECT SET ") + change + " WHERE NAME = 'second'");
    };
    EXPECT_THAT(Expire(), testing::AnyOf(0, -2147217864))
        << "kept, or refused as not what was read (80040E38)";
    EXPECT_EQ(Prospects(), Names{"second"}) << change;
    adodb_->before = nullptr;
  }
}

}  // namespace
}  // namespace orvane_test
