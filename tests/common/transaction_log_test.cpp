#include "common/transaction_log.hpp"

#include <gtest/gtest.h>

#include "platform/automation/error.hpp"
#include "tests/support/database_environment.hpp"

namespace OrvaneUtilities {
namespace {

using automation::DateTime;
using automation::Error;
using automation::Variant;
using Texts = std::vector<std::string>;

const Variant& Moment() {
  static const Variant moment =
      DateTime::FromParts({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3});
  return moment;
}

std::int32_t Record(std::int32_t question, const Variant& date = Moment()) {
  return CreateTransactionLog(question, "LBLQX3479", "160", 12, date, "LBLQX3480", "it's ünsaved", 5);
}

class TransactionLogTest : public testing::Test {
 protected:
  TransactionLogTest() {
    environment_.database.Run(
        "CREATE TABLE TRANSACTIONS (T_ID INTEGER PRIMARY KEY AUTOINCREMENT, Q_ID INTEGER NOT NULL, "
        "T_NAME VARCHAR(255), T_STATUS VARCHAR(50), CENTER INTEGER CHECK (CENTER <> 13), T_DATE DATETIME, "
        "T_COMMENT TEXT, USERCOMMENT TEXT, TIMESPENT INTEGER)");
  }
  Texts Rows() {
    return environment_.database.Rows(
        "SELECT T_ID || '|' || Q_ID || '|' || T_NAME || '|' || T_STATUS || '|' || CENTER || '|' || T_DATE || "
        "'|' || "
        "T_COMMENT || '|' || USERCOMMENT || '|' || TIMESPENT FROM TRANSACTIONS ORDER BY T_ID");
  }

  orvane_test::DatabaseEnvironment environment_;
};

TEST_F(TransactionLogTest, WritesOneRowAsGiven) {
  EXPECT_EQ(Record(4711), 1);
  EXPECT_EQ(Rows(), Texts{"1|4711|LBLQX3479|160|12|2004-07-26 09:05:03|LBLQX3480|it's ünsaved|5"});
}

TEST_F(TransactionLogTest, OpensAnEmptyClientSideSetToAddTo) {
  Record(4711);
  const std::vector<orvane_test::OpenedRecordset> expected = {
      {"SELECT * FROM TRANSACTIONS WHERE 0 = 1", ADODB::CursorType::Static, ADODB::LockType::Optimistic, 1, 0,
       ADODB::CursorLocation::Client}};
  EXPECT_EQ(environment_.adodb->recordsets, expected);
}

TEST_F(TransactionLogTest, EachCallReturnsTheIdOfItsOwnRow) {
  const std::int32_t first = Record(1);
  const std::int32_t second = Record(2);
  EXPECT_NE(first, second);
  EXPECT_EQ(
      environment_.database.Rows("SELECT Q_ID FROM TRANSACTIONS WHERE T_ID = " + std::to_string(second)),
      Texts{"2"});
}

TEST_F(TransactionLogTest, NullDateIsWrittenAsNull) {
  Record(1, Variant::Null());
  EXPECT_EQ(environment_.database.Rows("SELECT count(*) FROM TRANSACTIONS WHERE T_DATE IS NULL"), Texts{"1"});
}

TEST_F(TransactionLogTest, RejectedValueIsReportedRaisedAndNotInserted) {
  EXPECT_THROW(CreateTransactionLog(1, "n", "160", 13, Moment(), "c", "u", 0), Error);
  EXPECT_EQ(Rows(), Texts{});
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message.rfind(
                "METHOD: \r\nOrvServiceRequestMTS.Question.CreateTransactionLog caught: ", 0),
            0U);
}

TEST_F(TransactionLogTest, VotesToCommitInsideAnObjectContext) {
  const auto context = environment_.EnterObjectContext();
  Record(1);
  EXPECT_EQ(context->completes, 1);
  EXPECT_EQ(context->aborts, 0);
}

TEST_F(TransactionLogTest, VotesToAbortWhenItFails) {
  const auto context = environment_.EnterObjectContext();
  EXPECT_THROW(CreateTransactionLog(1, "n", "160", 13, Moment(), "c", "u", 0), Error);
  EXPECT_EQ(context->completes, 0);
  EXPECT_EQ(context->aborts, 1);
}

TEST_F(TransactionLogTest, VotesToCommitOnceEverythingIsClosed) {
  const auto context = environment_.EnterObjectContext();
  Texts votes;
  context->onVote = [&](std::string_view vote) {
    votes.emplace_back(vote);
    EXPECT_EQ(environment_.adodb->openRecordsets, 0);
    EXPECT_EQ(environment_.adodb->openConnections, 0);
  };
  Record(1);
  EXPECT_EQ(votes, Texts{"SetComplete"});
}

TEST_F(TransactionLogTest, VotesToAbortBeforeAnythingIsClosedOrReported) {
  const auto context = environment_.EnterObjectContext();
  Texts votes;
  context->onVote = [&](std::string_view vote) {
    votes.emplace_back(vote);
    EXPECT_EQ(environment_.adodb->openRecordsets, 1);
    EXPECT_EQ(environment_.adodb->openConnections, 1);
    EXPECT_TRUE(environment_.log->empty());
  };
  EXPECT_THROW(CreateTransactionLog(1, "n", "160", 13, Moment(), "c", "u", 0), Error);
  EXPECT_EQ(votes, Texts{"SetAbort"});
  EXPECT_EQ(environment_.adodb->openRecordsets, 0);
  EXPECT_EQ(environment_.adodb->openConnections, 0);
  EXPECT_EQ(environment_.log->size(), 1U);
}

// Its components come from the context then: connection string and log entry.
TEST_F(TransactionLogTest, TheContextMakesTheSuitesComponents) {
  const auto context = environment_.EnterObjectContext();
  EXPECT_THROW(CreateTransactionLog(1, "n", "160", 13, Moment(), "c", "u", 0), Error);
  EXPECT_EQ(context->created, (Texts{"Vantrel.Configuration", "Vantrel.Log"}));
}

TEST_F(TransactionLogTest, ColumnsAreSetInTheirOrder) {
  Texts set;
  environment_.adodb->beforeSet = [&set](const std::string& column) { set.push_back(column); };
  Record(1);
  EXPECT_EQ(set, (Texts{"Q_ID", "T_NAME", "T_STATUS", "CENTER", "T_DATE", "T_COMMENT", "USERCOMMENT",
                        "TIMESPENT"}));
}

TEST_F(TransactionLogTest, MissingTableIsReportedAndRaised) {
  environment_.database.Run("DROP TABLE TRANSACTIONS");
  EXPECT_THROW(Record(1), Error);
  EXPECT_EQ(environment_.log->size(), 1U);
}

TEST_F(TransactionLogTest, NothingStaysOpenWhateverFails) {
  int failures = 0;
  const int calls = environment_.LetEveryStepFail([&failures] {
    try {
      Record(1);
    } catch (const Error& error) {
      EXPECT_EQ(error.Number(), 70);
      ++failures;
    }
  });
  EXPECT_EQ(failures, calls - 1);
  EXPECT_GE(calls, 14);
}

}  // namespace
}  // namespace OrvaneUtilities
