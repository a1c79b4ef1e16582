// The shared procedures on the database servers: the same answers, reports and rows as on SQLite.
#include <gtest/gtest.h>

#include "common/localized_text.hpp"
#include "common/parameters.hpp"
#include "common/transaction_log.hpp"
#include "platform/automation/error.hpp"
#include "platform/scripting/dictionary/registration.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"
#include "tests/servers/server_environment.hpp"
#include "tests/support/raised_error.hpp"

namespace OrvaneUtilities {
namespace {

using automation::DateTime;
using automation::Error;
using automation::Variant;
using Texts = std::vector<std::string>;

class SharedProceduresTest : public testing::TestWithParam<std::string> {
 protected:
  SharedProceduresTest() {
    Scripting::RegisterDictionary(environment_.runtime.classes);
    OrvCommon::RegisterSqlConversion(environment_.runtime.classes);
  }
  ~SharedProceduresTest() override {
    EXPECT_EQ(environment_.adodb->openConnections, 0);
    EXPECT_EQ(environment_.adodb->openRecordsets, 0);
  }

  static std::int32_t Record(std::string_view status) {
    const Variant moment =
        DateTime::FromParts({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3});
    return CreateTransactionLog(4711, "LBLQX3479", status, 12, moment, "LBLQX3480", "it's ünsaved", 5);
  }

  orvane_test::ServerEnvironment environment_{GetParam()};
};

TEST_P(SharedProceduresTest, ReadsOneParameter) {
  environment_.Run("INSERT INTO PARAMETERS (PARAM_NAME, PARAM_VALUE) VALUES ('FTPPath', 'ftp://fïles')");
  EXPECT_EQ(GetParamValue("FTPPath"), "ftp://fïles");
  EXPECT_EQ(GetParamValue("Nothing"), "");
  EXPECT_TRUE(environment_.log->empty());
}

TEST_P(SharedProceduresTest, QuoteInAParametersNameBreaksTheStatement) {
  environment_.Run("INSERT INTO PARAMETERS (PARAM_NAME, PARAM_VALUE) VALUES ('A', '1')");
  for (const char* name : {"O'Neill", "x'; delete from PARAMETERS; --"}) {
    EXPECT_EQ(orvane_test::ErrorOf([&] { GetParamValue(name); }).Number(), -2147217900) << name;
  }
  EXPECT_EQ(environment_.log->size(), 2U);
  EXPECT_EQ(GetParamValue("A"), "1");
}

TEST_P(SharedProceduresTest, ReadsSeveralParameters) {
  environment_.Run("INSERT INTO PARAMETERS (PARAM_NAME, PARAM_VALUE) VALUES ('A', '1'), ('O''Neill', '2')");
  const Scripting::DictionaryPtr values = GetParameterValues({"A", "O'Neill", "Missing"});
  EXPECT_EQ(values->Keys().size(), 2U);
  EXPECT_EQ(values->Item("A"), Variant("1"));
  EXPECT_EQ(values->Item("O'Neill"), Variant("2"));
}

TEST_P(SharedProceduresTest, ReadsALocalizedText) {
  environment_.Run(
      "INSERT INTO I18NTEXT (LOCALEID, LABEL, TEXT) VALUES (1031, 'LBLQX3997', 'Grüß Gott'), (1033, 'EMPTY', "
      "'')");
  EXPECT_EQ(GetI18NText("LBLQX3997", 1031), "Grüß Gott");
  EXPECT_EQ(GetI18NText("LBLQX3997", 1033), "LBLQX3997");
  EXPECT_EQ(GetI18NText("EMPTY", 1033), "");
  EXPECT_EQ(GetI18NText("it's", 1033), "");
  EXPECT_TRUE(environment_.log->empty());
}

TEST_P(SharedProceduresTest, RecordsATransactionAndReturnsItsId) {
  const std::int32_t first = Record("160");
  const std::int32_t second = Record("161");
  EXPECT_NE(first, second);
  EXPECT_EQ(
      environment_.Rows("SELECT Q_ID, T_NAME, T_STATUS, CENTER, T_DATE, T_COMMENT, USERCOMMENT, TIMESPENT "
                        "FROM TRANSACTIONS WHERE T_ID = " +
                        std::to_string(second)),
      Texts{"4711|LBLQX3479|161|12|7/26/2004 09:05:03|LBLQX3480|it's ünsaved|5"});
}

TEST_P(SharedProceduresTest, RejectedTransactionIsReportedRaisedAndNotInserted) {
  EXPECT_THROW(Record(std::string(500, 'x')), Error);  // wider than the column
  EXPECT_EQ(environment_.Rows("SELECT Q_ID FROM TRANSACTIONS"), Texts{});
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message.rfind(
                "METHOD: \r\nOrvServiceRequestMTS.Question.CreateTransactionLog caught: ", 0),
            0U);
}

INSTANTIATE_TEST_SUITE_P(Servers, SharedProceduresTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& parameter) { return parameter.param; });

}  // namespace
}  // namespace OrvaneUtilities
