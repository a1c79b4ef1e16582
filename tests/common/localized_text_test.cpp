#include "common/localized_text.hpp"

#include <gtest/gtest.h>

#include "tests/support/database_environment.hpp"

namespace OrvaneUtilities {
namespace {

class LocalizedTextTest : public testing::Test {
 protected:
  LocalizedTextTest() {
    environment_.database.Run(
        "CREATE TABLE I18NTEXT (LOCALEID INTEGER NOT NULL, LABEL VARCHAR(50) NOT NULL, TEXT TEXT)");
    environment_.database.Run(
        "INSERT INTO I18NTEXT VALUES (1033, 'LBLQX3997', 'Dear Sir or Madam'), (1031, 'LBLQX3997', 'Grüß "
        "Gott'),"
        " (1033, 'LBLQX0001', ''), (1033, 'LBLQX0002', NULL), (1033, 'TWICE', 'first'), (1033, 'TWICE', "
        "'second')");
  }

  orvane_test::DatabaseEnvironment environment_;
};

TEST_F(LocalizedTextTest, TextOfTheLabelInTheLocale) {
  EXPECT_EQ(GetI18NText("LBLQX3997", 1033), "Dear Sir or Madam");
  EXPECT_EQ(GetI18NText("LBLQX3997", 1031), "Grüß Gott");
}

TEST_F(LocalizedTextTest, ReadsAtMostOneRecordForwardOnly) {
  GetI18NText("LBLQX3997", -1);
  const std::vector<orvane_test::OpenedRecordset> expected = {
      {"SELECT TEXT FROM I18NTEXT WHERE LOCALEID=-1 AND LABEL='LBLQX3997'", ADODB::CursorType::ForwardOnly,
       ADODB::LockType::ReadOnly, 1, 1}};
  EXPECT_EQ(environment_.adodb->recordsets, expected);
}

TEST_F(LocalizedTextTest, LabelWithoutATextIsReturnedItself) {
  EXPECT_EQ(GetI18NText("LBLQX9999", 1033), "LBLQX9999");
  EXPECT_EQ(GetI18NText("LBLQX3997", 1041), "LBLQX3997");
}

TEST_F(LocalizedTextTest, FirstOfTwoRowsCounts) {
  EXPECT_EQ(GetI18NText("TWICE", 1033), "first");
}

TEST_F(LocalizedTextTest, EmptyLabelCostsAConnectionAndRunsNoQuery) {
  EXPECT_EQ(GetI18NText("", 1033), "");
  EXPECT_EQ(environment_.adodb->connectionStrings.size(), 1U);
  EXPECT_TRUE(environment_.adodb->recordsets.empty());
}

TEST_F(LocalizedTextTest, EmptyTextIsNotReplacedByTheLabel) {
  EXPECT_EQ(GetI18NText("LBLQX0001", 1033), "");
}

TEST_F(LocalizedTextTest, NullTextGivesEmptyText) {
  EXPECT_EQ(GetI18NText("LBLQX0002", 1033), "");
}

TEST_F(LocalizedTextTest, QuoteInTheLabelGivesEmptyTextAndTellsNobody) {
  EXPECT_EQ(GetI18NText("LBL' or 'a'='a", 1033), "");
  EXPECT_EQ(GetI18NText("it's", 1033), "");
  EXPECT_TRUE(environment_.log->empty());
}

TEST_F(LocalizedTextTest, MissingTableGivesEmptyTextAndTellsNobody) {
  environment_.database.Run("DROP TABLE I18NTEXT");
  EXPECT_EQ(GetI18NText("LBLQX3997", 1033), "");
  EXPECT_TRUE(environment_.log->empty());
}

TEST_F(LocalizedTextTest, EveryCallOpensItsOwnConnection) {
  GetI18NText("LBLQX3997", 1033);
  GetI18NText("LBLQX3997", 1033);
  EXPECT_EQ(environment_.adodb->connectionStrings.size(), 2U);
}

TEST_F(LocalizedTextTest, FailedConnectionIsToldByTheGetterAloneAndGivesEmptyText) {
  environment_.configuration->connectionStrings.clear();
  EXPECT_EQ(GetI18NText("LBLQX3997", 1033), "");
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message,
            "METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: no value for "
            "Orvane/Orvane(1001).");
}

TEST_F(LocalizedTextTest, AFailureToCloseKeepsTheTextThatWasRead) {
  environment_.adodb->before = [](std::string_view step) {
    if (step == "Connection.Close") throw automation::Error(70, "Injected", "Permission denied");
  };
  EXPECT_EQ(GetI18NText("LBLQX3997", 1033), "Dear Sir or Madam");
  environment_.adodb->before = nullptr;
}

TEST_F(LocalizedTextTest, NothingIsRaisedAndNothingStaysOpenWhateverFails) {
  const int calls = environment_.LetEveryStepFail([] {
    const std::string text = GetI18NText("LBLQX3997", 1033);
    EXPECT_TRUE(text.empty() || text == "Dear Sir or Madam") << text;
  });
  EXPECT_GE(calls, 6);
}

}  // namespace
}  // namespace OrvaneUtilities
