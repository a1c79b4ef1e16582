// What a failed run leaves behind: the start banner without its stop line, the deletions made so far, nothing
// open.
#include <filesystem>
#include <fstream>

#include "tests/dormant/dormant_fixture.hpp"

namespace orvane_test {
namespace {

using automation::Error;
using automation::ErrorNumber;
using Names = std::vector<std::string>;

TEST_F(DormantUserExpiryTest, MissingLimitIsRaisedAfterTheStartBanner) {
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  EXPECT_EQ(Expire(), 3021);
  EXPECT_EQ(Log(), kStartBanner);
  EXPECT_EQ(Prospects(), Names{"old"});
}

TEST_F(DormantUserExpiryTest, RunReturnsNormallyWithoutALimit) {
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  EXPECT_NO_THROW(job_.Run());
  EXPECT_EQ(Log(), kStartBanner);
  EXPECT_EQ(Prospects(), Names{"old"});
  EXPECT_TRUE(environment_.log->empty());  // the job itself reports nothing
}

struct BadLimit {
  const char* name;
  const char* literal;
  std::int32_t error;
};

class DormantUserExpiryBadLimitTest : public DormantUserExpiryTest,
                                      public testing::WithParamInterface<BadLimit> {};

TEST_P(DormantUserExpiryBadLimitTest, EndsTheRunBeforeAnythingIsDeleted) {
  SetLimit(GetParam().literal);
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  EXPECT_EQ(Expire(), GetParam().error);
  EXPECT_EQ(Prospects(), Names{"old"});
  EXPECT_EQ(Log(), kStartBanner);
}

INSTANTIATE_TEST_SUITE_P(Limits, DormantUserExpiryBadLimitTest,
                         testing::Values(BadLimit{"Word", "'thirty'", 13}, BadLimit{"Empty", "''", 13},
                                         BadLimit{"Mixed", "'30 days'", 13}, BadLimit{"Null", "NULL", 94},
                                         BadLimit{"PastLong", "'2147483648'", 6},
                                         BadLimit{"BelowLong", "'-2147483649'", 6},
                                         BadLimit{"Huge", "'1e300'", 6}),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(DormantUserExpiryTest, FailedDeletionEndsTheRunAndKeepsTheDeletionsMadeSoFar) {
  SetLimit("'30'");
  AddProspect("first", "'1990-01-01 00:00:00'", "0");
  AddProspect("second", "'1990-01-01 00:00:00'", "0");
  AddProspect("third", "'1990-01-01 00:00:00'", "0");
  int deletions = 0;
  adodb_->before = [&deletions](std::string_view step) {
    if (step == "Recordset.Delete" && ++deletions == 2) throw Error(ErrorNumber::PermissionDenied, "Engine");
  };
  EXPECT_EQ(Expire(), 70);
  EXPECT_EQ(Prospects(), (Names{"second", "third"}));
  EXPECT_EQ(Log(), kStartBanner);
}

TEST_F(DormantUserExpiryTest, LastVisitThatIsNoDateEndsTheRun) {
  SetLimit("'30'");
  AddProspect("gone", "'1990-01-01 00:00:00'", "0");
  AddProspect("damaged", "'yesterday'", "0");
  EXPECT_NE(Expire(), 0);
  EXPECT_EQ(Prospects(), Names{"damaged"});
  EXPECT_EQ(Log(), kStartBanner);
}

TEST_F(DormantUserExpiryTest, LogFolderThatCannotBeMadeIsRaisedBeforeTheDatabaseIsTouched) {
  SetLimit("'30'");
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  environment_.configuration->rootPath = "/no/such/place/home";
  EXPECT_EQ(Expire(), 76);
  EXPECT_EQ(Prospects(), Names{"old"});
  EXPECT_TRUE(adodb_->connectionStrings.empty());
  EXPECT_NO_THROW(job_.Run());
}

TEST_F(DormantUserExpiryTest, LogFileThatCannotBeWrittenIsRaised) {
  SetLimit("'30'");
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  disk_->FailWrites(ErrorNumber::DiskFull);
  EXPECT_EQ(Expire(), 61);
  EXPECT_EQ(Prospects(), Names{"old"});
}

TEST_F(DormantUserExpiryTest, MissingConfigurationLeavesNothingBehind) {
  automation::Runtime bare;
  const automation::RuntimeScope scope(bare);
  EXPECT_NO_THROW(job_.Run());
}

TEST_F(DormantUserExpiryTest, MissingConnectionStringIsReportedByTheGetterAndEndsTheRun) {
  environment_.configuration->connectionStrings.clear();
  EXPECT_EQ(Expire(), 1001);
  EXPECT_EQ(Log(), kStartBanner);
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message,
            "METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: no value for "
            "Orvane/Orvane(1001).");
}

TEST_F(DormantUserExpiryTest, MissingProspectTableEndsTheRun) {
  SetLimit("'30'");
  database_.Run("DROP TABLE PROSPECT");
  EXPECT_NE(Expire(), 0);
  EXPECT_EQ(Log(), kStartBanner);
}

TEST_F(DormantUserExpiryTest, MissingColumnIsRaised) {
  SetLimit("'30'");
  database_.Run("ALTER TABLE PROSPECT DROP COLUMN PENDINGQUESTIONS");
  EXPECT_EQ(Expire(), 3265);
  EXPECT_EQ(Log(), kStartBanner);
}

// The number that stands for every failure that a database engine reports.
constexpr std::int32_t kEngineFailure = -2147467259;

TEST_F(DormantUserExpiryTest, MissingDatabaseIsReportedByTheGetterAndEndsTheRun) {
  std::filesystem::remove(database_.File());
  EXPECT_EQ(Expire(), kEngineFailure);
  EXPECT_EQ(Log(), kStartBanner);
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message,
            "METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: unable to open "
            "database file: " +
                database_.File().string() + " (No such file or directory)(-2147467259).");
  EXPECT_FALSE(std::filesystem::exists(database_.File()));
}

class DormantUserExpiryOnRollbackJournalTest : public DormantUserExpiryTest {
 protected:
  DormantUserExpiryOnRollbackJournalTest() : DormantUserExpiryTest(false) {}
};

TEST_F(DormantUserExpiryOnRollbackJournalTest, FileThatIsNoDatabaseEndsTheRun) {
  std::ofstream(database_.File(), std::ios::trunc) << std::string(4096, 'x');
  EXPECT_EQ(Expire(), kEngineFailure);
  EXPECT_EQ(Log(), kStartBanner);
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_NE(environment_.log->at(0).message.find("file is not a database"), std::string::npos);
}

TEST_F(DormantUserExpiryOnRollbackJournalTest, DamagedTableEndsTheRunAndDeletesNothing) {
  SetLimit("'30'");
  for (int i = 0; i < 2000; ++i) AddProspect("p" + std::to_string(i), "'1990-01-01 00:00:00'", "0");
  // The pages behind the first two are overwritten: the file still opens, the table does not read.
  const auto size = std::filesystem::file_size(database_.File());
  std::fstream file(database_.File(), std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(8192);
  file << std::string(size - 8192, '\xEE');
  file.close();
  EXPECT_EQ(Expire(), kEngineFailure);
  EXPECT_EQ(Log(), kStartBanner);
}

TEST_F(DormantUserExpiryOnRollbackJournalTest, DatabaseThatSomeoneHoldsEndsTheRunWhenTheTimeoutIsOver) {
  SetLimit("'30'");
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  environment_.configuration->connectionStrings[{"Orvane", "Orvane"}] =
      database_.ConnectionString() + ";Timeout=0";
  database_.Run("BEGIN EXCLUSIVE");
  EXPECT_EQ(Expire(), kEngineFailure);
  database_.Run("ROLLBACK");
  EXPECT_EQ(Log(), kStartBanner);
  EXPECT_EQ(Prospects(), Names{"old"});
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message,
            "METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: database is "
            "locked(-2147467259).");
}

TEST_F(DormantUserExpiryTest, DatabaseThatSomeoneWritesEndsTheRunAtTheFirstDeletion) {
  SetLimit("'30'");
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  environment_.configuration->connectionStrings[{"Orvane", "Orvane"}] =
      database_.ConnectionString() + ";Timeout=0";
  {
    SqliteDatabase other(database_.File());
    other.Run("BEGIN IMMEDIATE");
    EXPECT_EQ(Expire(), kEngineFailure);
  }
  EXPECT_EQ(Log(), kStartBanner);
  EXPECT_EQ(Prospects(), Names{"old"});
}

TEST_F(DormantUserExpiryTest, ReadOnlyDatabaseEndsTheRunAtTheFirstDeletion) {
  SetLimit("'30'");
  AddProspect("fresh", "'2004-07-26 00:00:00'", "0");
  environment_.configuration->connectionStrings[{"Orvane", "Orvane"}] =
      database_.ConnectionString() + ";Mode=Read";
  EXPECT_EQ(Expire(), 0);
  AddProspect("old", "'1990-01-01 00:00:00'", "0");
  EXPECT_EQ(Expire(), kEngineFailure);
  EXPECT_EQ(Prospects(), (Names{"fresh", "old"}));
  EXPECT_EQ(Log(), std::string(kStartBanner) + std::string(kStopLine) + std::string(kStartBanner));
}

// Whatever fails, the run ends as a failed run, and nothing stays open.
TEST_F(DormantUserExpiryTest, NoConnectionAndNoRecordSetStaysOpenWhateverFails) {
  SetLimit("'30'");
  int failures = 0;
  const int runs = environment_.LetEveryStepFail(
      [this, &failures] {
        database_.Run("DELETE FROM PROSPECT");
        AddProspect("gone", "'1990-01-01 00:00:00'", "0");
        AddProspect("here", "'2004-07-26 00:00:00'", "0");
        const std::int32_t error = Expire();
        EXPECT_TRUE(error == 0 || error == 70) << error;
        failures += error == 70 ? 1 : 0;
      },
      orvane_test::Closing::ByRelease);
  EXPECT_EQ(failures, runs - 1);
  EXPECT_GT(runs, 12);
  EXPECT_EQ(Prospects(), Names{"here"});
}

}  // namespace
}  // namespace orvane_test
