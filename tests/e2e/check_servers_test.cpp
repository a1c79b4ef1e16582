// "check" and the preflight with databases on servers, a directory server and a mail server.
#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/adodb/session/connection_string.hpp"
#include "tests/cdo/smtp_server.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Strings = std::vector<std::string>;

class CheckServersTest : public testing::TestWithParam<std::string> {
 protected:
  CheckServersTest() {
    const Outcome made = RunHost({"init", Home(), "--database", suite_->ConnectionString(), "--catalog",
                                  catalogue_->ConnectionString()});
    if (made.exitCode != 0) throw std::runtime_error(made.err);
    suite_->GrantJobs("grants-" + GetParam() + ".sql");
    catalogue_->GrantJobs("grants-" + GetParam() + "-ecatalog.sql");
    Replace(suite_->ConnectionString(), suite_->JobsConnectionString());
    Replace(catalogue_->ConnectionString(), catalogue_->JobsConnectionString());
  }
  std::string Home() const { return (folder_.Path() / "home").string(); }
  void Replace(const std::string& what, const std::string& with) {
    const std::filesystem::path file = folder_.Path() / "home/config/siteConfiguration.xml";
    std::string text = TemporaryFolder::Read(file);
    const std::size_t at = text.find(what);
    if (at == std::string::npos) throw std::runtime_error(what + " is not in the site configuration");
    folder_.Write("home/config/siteConfiguration.xml", text.replace(at, what.size(), with));
  }
  Outcome Check(const Strings& jobs = {}) const {
    Strings words{"check", "--home", Home()};
    words.insert(words.end(), jobs.begin(), jobs.end());
    return RunHost(words);
  }
  // The jobs' account on the suite's or the catalogue's database.
  std::string Account(const ServerDatabase& database) const {
    const auto user =
        ADODB::engine::ConnectionString::Parse(database.JobsConnectionString()).Value("UID").value();
    return GetParam() == "mariadb" ? user + "@'%'" : user;
  }

  std::unique_ptr<ServerDatabase> suite_ = std::make_unique<ServerDatabase>(GetParam());
  std::unique_ptr<ServerDatabase> catalogue_ = std::make_unique<ServerDatabase>(GetParam());
  TemporaryFolder folder_;
};

TEST_P(CheckServersTest, TheGrantsAreEnough) {
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.out;
  EXPECT_THAT(outcome.out,
              AllOf(Not(HasSubstr("error")), Not(HasSubstr("warning")), Not(HasSubstr("rights"))));
}

TEST_P(CheckServersTest, NamesTheRightsThatAreMissing) {
  suite_->Execute("REVOKE DELETE ON PROSPECT FROM " + Account(*suite_));
  suite_->Execute("REVOKE INSERT ON TRANSACTIONS FROM " + Account(*suite_));
  suite_->Execute("REVOKE UPDATE (T2_DATE) ON REMINDER FROM " + Account(*suite_));
  suite_->Execute("REVOKE SELECT ON CHATSESSIONS FROM " + Account(*suite_));
  catalogue_->Execute("REVOKE SELECT ON FAQCATEGORY FROM " + Account(*catalogue_));
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_THAT(
      outcome.out,
      AllOf(HasSubstr("error: suite's database, table PROSPECT: the jobs' account may not DELETE, or"),
            HasSubstr("error: suite's database, table TRANSACTIONS: the jobs' account may not INSERT, or"),
            HasSubstr("error: suite's database, table REMINDER: the jobs' account may not UPDATE "
                      "(T2_DATE), or"),
            HasSubstr("error: suite's database, table CHATSESSIONS: cannot be read: "),
            HasSubstr("error: catalogue database, table FAQCATEGORY: cannot be read: "),
            Not(HasSubstr("table QUESTIONS:"))));
}

TEST_P(CheckServersTest, NamesTablesAndColumnsThatAreMissing) {
  suite_->Execute("DROP TABLE PREVIEW");
  suite_->Execute("ALTER TABLE QUESTIONHISTORY DROP COLUMN ENDSTATUSTIME");
  const Outcome outcome = Check({"CleanUp", "Archive"});
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("error: suite's database, table PREVIEW: "),
                    HasSubstr("error: suite's database, table QUESTIONHISTORY: columns that a job "
                              "reads are missing: ENDSTATUSTIME; ")));
}

TEST_P(CheckServersTest, LooksForBrokenRowsInThisEnginesWords) {
  suite_->Execute("INSERT INTO REMINDER VALUES (5, '2004-07-26 09:05:03', NULL, 150)");
  suite_->Execute("INSERT INTO DATAFILES VALUES (7, 'a.txt', 1, '2004-07-26 09:05:03')");
  suite_->Execute("INSERT INTO QUESTIONHISTORY (Q_ID, Q_CATEGORY) VALUES (1, 3)");
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exitCode, 0) << outcome.out;
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("warning: REMINDER: rows without their question in QUESTIONS: 5; "),
                    HasSubstr("folders are gone whose rows in DATAFILES are due: 7Q; "),
                    HasSubstr("warning: catalogue database, table FAQCATEGORY: is empty")));
}

TEST_P(CheckServersTest, AServerThatIsDownIsUnavailable) {
  Replace(suite_->JobsConnectionString(),
          GetParam() == "mariadb"
              ? "Driver={MariaDB Unicode};Server=127.0.0.1;Port=1;Database=x;UID=x;PWD=x"
              : "Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=1;Database=x;UID=x;PWD=x");
  const Outcome outcome = Check({"DormantUserExpiry"});
  EXPECT_EQ(outcome.exitCode, 69) << outcome.out;
  EXPECT_THAT(outcome.out, HasSubstr("error: suite's database: does not answer: "));
}

TEST_P(CheckServersTest, ADirectoryServerIsAskedAsTheJobsAskIt) {
  const Server slapd = Server::Shared("slapd");
  Replace("<key name=\"LDAPServer\">", "<key name=\"LDAPServer\">" + slapd.Setting("url"));
  Replace("<key name=\"LDAPRoot\">", "<key name=\"LDAPRoot\">dc=site");
  EXPECT_EQ(Check({"Archive"}).exitCode, 0);
  EXPECT_EQ(RunHost({"run", "--home", Home(), "Archive"}).exitCode, 0);
  Replace("<key name=\"MemScriptCode\">secret", "<key name=\"MemScriptCode\">wrong");
  const Outcome outcome = Check({"Archive"});
  EXPECT_EQ(outcome.exitCode, 69);
  EXPECT_THAT(outcome.out, HasSubstr("The directory refuses the account cn=orvane,dc=site"));
  EXPECT_EQ(RunHost({"run", "--home", Home(), "Archive"}).exitCode, 69);
}

TEST_P(CheckServersTest, AMailServerIsGreetedAndGetsNoMail) {
  const SmtpServer mails("login", (folder_.Path() / "server").string());
  Replace("<key name=\"sendusing\">1", "<key name=\"sendusing\">2");
  Replace("<key name=\"smtpserver\">", "<key name=\"smtpserver\">127.0.0.1");
  Replace("<key name=\"smtpserverport\">25",
          "<key name=\"sendusername\">user</key><key name=\"sendpassword\">pass word</key>"
          "<key name=\"smtpserverport\">" +
              std::to_string(mails.Port()));
  const Outcome outcome = Check({"SolveOnNoResponse"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.out;
  Replace("pass word", "another");
  const Outcome refused = Check({"SolveOnNoResponse"});
  EXPECT_EQ(refused.exitCode, 69);
  EXPECT_THAT(refused.out, HasSubstr("error: the mail transport: "));
  EXPECT_EQ(RunHost({"run", "--home", Home(), "SolveOnNoResponse"}).exitCode, 69);
  EXPECT_FALSE(mails.HasMail(1));
}

INSTANTIATE_TEST_SUITE_P(Servers, CheckServersTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return server.param; });

}  // namespace
}  // namespace orvane_test
