// The schema and the grants on real servers: the jobs' account can do what the jobs do, and no more.
#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "platform/adodb/odbc/provider.hpp"
#include "platform/automation/error.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/raised_error.hpp"

namespace {

using automation::Variant;
using testing::ElementsAre;

class GrantsTest : public testing::TestWithParam<std::string> {
 protected:
  GrantsTest() {
    database_.RunSchemaFile(GetParam() + ".sql");
    database_.GrantJobs("grants-" + GetParam() + ".sql");
    session_ = ADODB::odbc::MakeProvider()->Connect(
        ADODB::engine::ConnectionString::Parse(database_.JobsConnectionString()));
  }

  void Allowed(const std::string& sql) {
    try {
      session_->Query(sql, {});
    } catch (const automation::Error& error) {
      ADD_FAILURE() << sql << "\n" << error.Description();
    }
  }

  // By the engine, for want of the right that the statement's first word needs.
  void Refused(const std::string& sql) {
    const automation::Error error = orvane_test::ErrorOf([&] { session_->Query(sql, {}); });
    const std::string verb = sql.substr(0, sql.find(' '));
    if (GetParam() == "mariadb") {
      EXPECT_EQ(error.SqlState(), "42000") << sql;
      EXPECT_THAT(error.Description(), testing::HasSubstr(verb + " command denied to user")) << sql;
    } else {
      EXPECT_EQ(error.SqlState(), "42501") << sql;
      EXPECT_THAT(error.Description(), testing::HasSubstr(verb == "DROP" ? "must be owner of table"
                                                                         : "permission denied for table"))
          << sql;
    }
  }

  orvane_test::ServerDatabase database_{GetParam()};
  std::unique_ptr<ADODB::engine::Session> session_;
};

TEST_P(GrantsTest, LetTheJobsReadEveryTableThatTheyRead) {
  for (const char* table :
       {"PARAMETERS", "PROSPECT", "QUESTIONS", "QUESTIONHISTORY", "TRANSACTIONS", "DATAFILES", "CHATSESSIONS",
        "REMINDER", "EMAIL", "I18NTEXT", "DATALABEL", "SITE", "PRODUCT", "OBJECT", "PROBLEM", "PRIORITY"}) {
    Allowed(std::string("SELECT * FROM ") + table);
  }
}

TEST_P(GrantsTest, LetTheJobsChangeWhatTheyChange) {
  Allowed("DELETE FROM PREVIEW ");
  for (const char* table :
       {"PROSPECT", "QUESTIONS", "QUESTIONHISTORY", "DATAFILES", "REMINDER", "TRANSACTIONS"}) {
    Allowed(std::string("DELETE FROM ") + table + " WHERE 1 = 0");
  }
  Allowed("UPDATE QUESTIONS SET Q_STATUS = 160 WHERE Q_ID = 1");
  Allowed("UPDATE REMINDER SET T2_DATE = NULL WHERE Q_ID = 1");
  Allowed(
      "Delete from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where Q_ORIGINATOR='jdoe')");
  Allowed("INSERT INTO TRANSACTIONS (Q_ID, T_NAME) VALUES (1, 'x') RETURNING T_ID");
}

TEST_P(GrantsTest, RefuseTheRest) {
  Refused("UPDATE QUESTIONS SET Q_TEXT = 'x'");
  Refused("UPDATE PROSPECT SET PENDINGQUESTIONS = PENDINGQUESTIONS - 1 WHERE EMAILID = 'x'");
  Refused("UPDATE PARAMETERS SET PARAM_VALUE = 'x'");
  Refused("DELETE FROM PARAMETERS");
  Refused("DELETE FROM CHATSESSIONS");
  Refused("UPDATE TRANSACTIONS SET T_NAME = 'x'");
  Refused("INSERT INTO QUESTIONS (Q_ID) VALUES (1)");
  Refused("UPDATE REMINDER SET R_STATUS = 1");
  Refused("DROP TABLE PREVIEW");
}

TEST_P(GrantsTest, LetTheJobsSeeKeysAndGeneratedColumns) {
  const bool upperCase = GetParam() == "mariadb";
  for (const char* table : {"PROSPECT", "QUESTIONS", "REMINDER", "TRANSACTIONS"}) {
    EXPECT_FALSE(session_->Describe(table).keyColumns.empty()) << table;
  }
  EXPECT_THAT(session_->Describe("REMINDER").keyColumns,
              ElementsAre(upperCase ? "Q_ID" : "q_id", upperCase ? "R_STATUS" : "r_status"));
  EXPECT_EQ(session_->Describe("TRANSACTIONS").generatedColumn, upperCase ? "T_ID" : "t_id");
}

INSTANTIATE_TEST_SUITE_P(Servers, GrantsTest, testing::Values("postgresql", "mariadb"),
                         [](const testing::TestParamInfo<std::string>& server) { return server.param; });

class CatalogueGrantsTest : public testing::TestWithParam<std::string> {};

TEST_P(CatalogueGrantsTest, LetTheJobsReadTheCatalogueAndNothingElse) {
  orvane_test::ServerDatabase database(GetParam());
  database.RunSchemaFile(GetParam() + "-ecatalog.sql");
  database.GrantJobs("grants-" + GetParam() + "-ecatalog.sql");
  const auto session = ADODB::odbc::MakeProvider()->Connect(
      ADODB::engine::ConnectionString::Parse(database.JobsConnectionString()));
  for (const char* table : {"FAQPARAMETER", "FAQCATEGORY", "PRODUCTCATEGORY", "PRODUCT"}) {
    EXPECT_NO_THROW(session->Query(std::string("SELECT * FROM ") + table, {})) << table;
    const automation::Error refused =
        orvane_test::ErrorOf([&] { session->Execute(std::string("DELETE FROM ") + table, {}); });
    EXPECT_EQ(refused.SqlState(), GetParam() == "postgresql" ? "42501" : "42000") << table;
    EXPECT_THAT(refused.Description(), testing::AnyOf(testing::HasSubstr("permission denied for table"),
                                                      testing::HasSubstr("DELETE command denied to user")))
        << table;
  }
}

INSTANTIATE_TEST_SUITE_P(Servers, CatalogueGrantsTest, testing::Values("postgresql", "mariadb"),
                         [](const testing::TestParamInfo<std::string>& server) { return server.param; });

}  // namespace
