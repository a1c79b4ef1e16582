// OrvaneProcess.SolveOnNoResponse through the real program and a live mail server: the mails as they arrive,
// read by another mail library, and the rows, pages and logs afterwards. On every engine, with both
// directories, with and without TLS and login.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>
#include <ostream>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/cdo/smtp_server.hpp"
#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/suite/load_xsls/page.hpp"

namespace orvane_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

constexpr const char* kPost = "\x01\x02\x03\x04 2004-07-20 10:00:00.000";
constexpr const char* kAnswer = "\x04\x03\x02\x01 2004-07-21 11:30:00.000";
constexpr const char* kHostile = "<script>alert(1)</script><b>&lt;b&gt;";

// By the clock that the program reads: std::time may be some milliseconds behind it.
std::time_t Now() {
  return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

struct Way {
  const char* name;
  const char* engine;     // sqlite, postgresql or mariadb
  const char* directory;  // file, starttls or ldaps
  const char* mail;       // of the SMTP server
  friend void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }
};

std::string Key(const std::string& name, const std::string& value) {
  return "<key name=\"" + name + "\">" + value + "</key>";
}

class SolveOverSmtpTest : public testing::TestWithParam<Way> {
 protected:
  SolveOverSmtpTest() : mails_(GetParam().mail, (suite_.Folder().Path() / "server").string()) {
    std::filesystem::remove_all(suite_.Home());
    Strings init{"init", suite_.Home().string()};
    if (OnServer()) {
      server_ = std::make_unique<ServerDatabase>(GetParam().engine);
      catalogue_ = std::make_unique<ServerDatabase>(GetParam().engine);
      for (const std::string& word : {std::string("--database"), server_->ConnectionString(),
                                      std::string("--catalog"), catalogue_->ConnectionString()}) {
        init.push_back(word);
      }
    }
    const Outcome made = RunHost(init);
    if (made.exitCode != 0) throw std::runtime_error(made.err);
    if (!OnServer()) database_ = std::make_unique<Database>(suite_.DatabaseFile());
    Configure("user", "pass word", mails_.CertificateFile());
    suite_.Folder().Write("home/config/directory.ldif", TemporaryFolder::Read(ORVANE_PEOPLE));
    Execute("UPDATE PARAMETERS SET PARAM_VALUE = '3' WHERE PARAM_NAME = 'BackOfficeApplication'");
  }

  bool OnServer() const { return std::string_view(GetParam().engine) != "sqlite"; }

  // Replaces the sections MEMBERSHIP and CDO of the site configuration.
  void Configure(const std::string& user, const std::string& password, const std::string& authority) {
    const std::string way = GetParam().mail;
    std::string mail = Key("sendusing", "2") + Key("smtpserver", "127.0.0.1") +
                       Key("smtpserverport", std::to_string(mails_.Port()));
    if (way == "starttls" || way == "smtps") {
      mail += Key("smtptls", way);
      if (!authority.empty()) mail += Key("smtpcertificatefile", authority);
    }
    if (way == "login" || way == "starttls")
      mail += Key("sendusername", user) + Key("sendpassword", password);

    std::string people =
        Key("MemScriptUser", "cn=orvane") + Key("MemScriptCode", "secret") + Key("LDAPRoot", "dc=site");
    if (const std::string directory = GetParam().directory; directory == "file") {
      people += Key("LDAPServer", "");
    } else {
      const Server slapd = Server::Shared("slapd");
      people += Key("LDAPServer", slapd.Setting(directory == "ldaps" ? "tls_url" : "url")) +
                Key("LDAPStartTLS", directory == "starttls" ? "TRUE" : "FALSE") +
                Key("LDAPCertificateFile", slapd.Setting("ca"));
    }
    const std::filesystem::path file = suite_.Home() / "config" / "siteConfiguration.xml";
    std::string site = TemporaryFolder::Read(file);
    const auto replace = [&site](const std::string& section, const std::string& keys) {
      const std::string begin = "<section name=\"" + section + "\">";
      const std::size_t from = site.find(begin) + begin.size();
      site.replace(from, site.find("</section>", from) - from, keys);
    };
    replace("MEMBERSHIP", people);
    replace("CDO", mail);
    suite_.Folder().Write("home/config/siteConfiguration.xml", site);
  }

  void Execute(const std::string& statement) {
    if (server_) {
      server_->Execute(statement);
    } else {
      database_->Execute(statement);
    }
  }
  Strings Rows(const std::string& query) {
    if (database_) return database_->Rows(query);
    Strings result;
    const auto session = server_->Connect();
    const auto rows = session->Query(query, {});
    while (rows->Next()) {
      std::string row;
      for (std::size_t i = 0; i < rows->Columns().size(); ++i) {
        const automation::Variant value = rows->Value(i);
        row += (i == 0 ? "" : "|") + (value.IsNull() ? std::string("NULL") : Shown(value));
      }
      result.push_back(row);
    }
    return result;
  }
  static std::string Shown(const automation::Variant& value) {
    if (!value.IsDate()) return automation::ToText(value);
    const automation::DateTimeParts parts = automation::ToDateTime(value).Parts();
    std::tm time{};
    time.tm_year = parts.year - 1900, time.tm_mon = parts.month - 1, time.tm_mday = parts.day;
    time.tm_hour = parts.hour, time.tm_min = parts.minute, time.tm_sec = parts.second;
    return DateAt(timegm(&time));
  }

  // Due for its reminder, or for its conclusion. Without an address the question is a user's.
  void Add(int id, const std::string& originator, const std::string& address, bool conclusion) {
    const std::string no = GetParam().engine == std::string_view("postgresql") ? "false" : "0";
    const std::string yes = GetParam().engine == std::string_view("postgresql") ? "true" : "1";
    const std::string number = std::to_string(id);
    Execute(
        "INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_ORIGINATOR, PROSPECT, EMAILID, Q_DESC, Q_TEXT, A_TEXT, "
        "Q_PRODUCTCAT, PRODUCTID, Q_CATEGORY, Q_PRIORITY, CENTER, BP_NUMBER) VALUES (" +
        number + ", 150, '" + originator + "', " +
        (address.empty() ? no + ", NULL" : yes + ", '" + address + "'") + ", 'Case " + number + " " +
        kHostile + "', '" + kPost + "Für 佐藤 " + kHostile + "\r\n\tline', '" + kAnswer +
        "Which one?', 0, 0, 0, 2, 7, 1042)");
    const std::string due = "'" + DateText(-120) + "'";
    Execute("INSERT INTO REMINDER (Q_ID, T1_DATE, T2_DATE, R_STATUS) VALUES (" + number + ", " +
            (conclusion ? "NULL, " + due : due + ", NULL") + ", 150)");
  }

  void Run() { Run({"run", "--home", suite_.Home().string(), "SolveOnNoResponse"}); }
  // With services that the preflight refuses.
  void RunAllTheSame() {
    Run({"run", "--no-preflight", "--home", suite_.Home().string(), "SolveOnNoResponse"});
  }
  void Run(const Strings& words) {
    begun_ = Now();
    const Outcome outcome = RunHost(words);
    ended_ = Now();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    warnings_ = outcome.err;
  }

  // A moment of the run, moved by some hours, as `format` shows it: one text for each second.
  std::set<std::string> Moments(const char* format, long hours = 0) const {
    std::set<std::string> texts;
    for (std::time_t moment = begun_; moment <= ended_; ++moment) {
      const std::time_t moved = moment + hours * 3600;
      std::tm parts{};
      gmtime_r(&moved, &parts);
      char text[64];
      std::strftime(text, sizeof text, format, &parts);
      texts.insert(text);
    }
    return texts;
  }
  // The announcement of a reminder: a day 168 hours from today's midnight, and the present time of day.
  void ExpectBodyWithMoment(const std::string& body, const std::string& before, const char* day,
                            const std::string& after) {
    for (const std::string& text : Moments((std::string(day) + "|%H:%M:%S").c_str(), 168)) {
      int hour = 0, minute = 0, second = 0;
      const std::size_t bar = text.find('|');
      std::sscanf(text.c_str() + bar, "|%d:%d:%d", &hour, &minute, &second);
      const std::string time =
          std::to_string(hour) + ":" + std::to_string(minute) + ":" + std::to_string(second);
      if (body == before + text.substr(0, bar) + " " + time + after) return;
    }
    ADD_FAILURE() << body;
  }

  // Addresses, subject and attachment of mail number `n`.
  void ExpectMail(int n, const std::string& to, const std::string& subject, const std::string& description) {
    SCOPED_TRACE(n);
    const std::string number = std::to_string(n);
    ASSERT_EQ(mails_.Kept(number + ".done"), "");
    EXPECT_EQ(mails_.Kept(number + ".envelope"), "service@orvane.example\n" + to);
    EXPECT_EQ(mails_.Kept(number + ".from"), "service@orvane.example");
    EXPECT_EQ(mails_.Kept(number + ".to"), to);
    EXPECT_EQ(mails_.Kept(number + ".subject"), subject);
    EXPECT_TRUE(std::regex_match(mails_.Kept(number + ".0.name"), std::regex("[0-9]{4,8}\\.htm")));
    EXPECT_EQ(mails_.Kept(number + ".0.type"), "text/html");
    const Page page(mails_.Kept(number + ".0.data"));
    EXPECT_THAT(page.Texts("//h1"), ElementsAre(description));
    EXPECT_THAT(page.Texts("//p[@class='text']"),
                ElementsAre(std::string("Für 佐藤 ") + kHostile + "\n    line", "Which one?"));
    EXPECT_EQ(page.Count("//script | //b"), 0U);
  }
  std::string Body(int n) const { return mails_.Kept(std::to_string(n) + ".body"); }
  std::vector<std::filesystem::path> PagesLeft() const {
    std::vector<std::filesystem::path> pages;
    for (const auto& entry : std::filesystem::directory_iterator(suite_.Home() / "Data" / "HTML")) {
      pages.push_back(entry.path());
    }
    return pages;
  }

  HandMadeSuite suite_;
  const SmtpServer mails_;
  std::unique_ptr<Database> database_;
  std::unique_ptr<ServerDatabase> server_;
  std::unique_ptr<ServerDatabase> catalogue_;
  std::string warnings_;  // of the last run
  std::time_t begun_ = 0;
  std::time_t ended_ = 0;
};

constexpr Way kSqliteFilePlain{"SqliteFilePlain", "sqlite", "file", "plain"};
constexpr Way kSqliteLdapLogin{"SqliteLdapLogin", "sqlite", "starttls", "login"};
constexpr Way kPostgresqlLdapStartTls{"PostgresqlLdapStartTls", "postgresql", "starttls", "starttls"};
constexpr Way kMariadbLdapsSmtps{"MariadbLdapsSmtps", "mariadb", "ldaps", "smtps"};

std::string NameOfWay(const testing::TestParamInfo<Way>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Ways, SolveOverSmtpTest,
                         testing::Values(kSqliteFilePlain, kSqliteLdapLogin, kPostgresqlLdapStartTls,
                                         kMariadbLdapsSmtps),
                         NameOfWay);

TEST_P(SolveOverSmtpTest, MailsArriveWithTheirPagesAndTheRowsMoveOn) {
  Add(26, "jdoe", "", false);
  Add(27, "jaermel", "", true);
  Add(28, "jaermel", "visitor@fair.example", true);
  Add(29, "jdoe", "newcomer@fair.example", false);
  Add(30, "jdoe", "refused@fair.example", false);

  Run();

  const std::string hostile = std::string(" ") + kHostile;
  ExpectMail(1, "jane@x.example", "Herinnering: wij wachten op uw antwoord (26) ", "Case 26" + hostile);
  ExpectBodyWithMoment(
      Body(1),
      "Geachte klant,\r\n\r\n"
      "Wij hebben uw serviceaanvraag beantwoord en sindsdien niets meer van u gehoord. De bijgevoegde pagina "
      "toont de aanvraag met ons antwoord. U kunt antwoorden op onze site:\r\n\r\n"
      "https://service.orvane.example/s.asp?Q=1A0\r\n"
      "\r\n\r\nZonder antwoord van u sluiten wij deze aanvraag af op ",
      "%d-%m-%Y", "\t  (dat is na 168 uur)\r\n");
  ExpectMail(2, "joerg@x.example", "Ihre Serviceanfrage ist abgeschlossen (27) ", "Case 27" + hostile);
  const std::string concluded =
      "Jörg Ärmel - guten Tag,\r\n\r\n"
      "Wir haben keine Rückmeldung auf unsere Antwort erhalten und Ihre Serviceanfrage daher abgeschlossen. "
      "Die beigefügte Seite zeigt die ganze Anfrage. Sie finden sie auch auf unserer Website:\r\n\r\n"
      "https://service.orvane.example/s.asp?Q=";
  EXPECT_EQ(Body(2), concluded + "1B0\r\n");
  ExpectMail(3, "visitor@fair.example", "Ihre Serviceanfrage ist abgeschlossen (28) ", "Case 28" + hostile);
  EXPECT_EQ(Body(3), concluded + "1C0\r\n");
  // A prospect's conclusion is announced in the suite's language, the rest is in the user's.
  ExpectMail(4, "newcomer@fair.example", "Herinnering: wij wachten op uw antwoord (29) ",
             "Case 29" + hostile);
  EXPECT_THAT(Body(4), HasSubstr("Geachte klant,\r\n\r\nWij hebben uw"));
  EXPECT_THAT(Body(4), HasSubstr("s.asp?Q=1D0\r\n\r\n\r\nWithout a reply from you, we will conclude this "
                                 "request on "));
  EXPECT_THAT(Body(4), testing::EndsWith("\t  (that is, after 168 hours)\r\n"));
  EXPECT_FALSE(mails_.HasMail(5));

  EXPECT_THAT(Rows("SELECT Q_ID FROM REMINDER ORDER BY Q_ID"), ElementsAre("26", "29", "30"));
  const Strings scheduled = Rows("SELECT DISTINCT T2_DATE FROM REMINDER");
  ASSERT_EQ(scheduled.size(), 1U);
  EXPECT_THAT(Moments("%Y-%m-%d %H:%M:%S", 168 - 72), testing::Contains(scheduled[0]));
  EXPECT_THAT(Rows("SELECT Q_ID, Q_STATUS FROM QUESTIONS ORDER BY Q_ID"),
              ElementsAre("26|150", "27|160", "28|160", "29|150", "30|150"));
  EXPECT_THAT(Rows("SELECT Q_ID, T_NAME, T_STATUS, CENTER, T_COMMENT, USERCOMMENT, TIMESPENT FROM "
                   "TRANSACTIONS ORDER BY T_ID"),
              ElementsAre("27|LBLQX3479|160|7|LBLQX3480||0", "28|LBLQX3479|160|7|LBLQX3480||0"));
  const Strings steps = Rows("SELECT DISTINCT T_DATE FROM TRANSACTIONS");
  ASSERT_EQ(steps.size(), 1U);
  EXPECT_THAT(Moments("%Y-%m-%d %H:%M:%S"), testing::Contains(steps[0]));

  // The job stays silent about the refused mail, whose page is the only one that stays; the host does not.
  EXPECT_THAT(warnings_,
              testing::StartsWith("warning: OrvaneProcess.SolveOnNoResponse: a mail was not taken: to "
                                  "\"refused@fair.example\", subject \""));
  EXPECT_THAT(warnings_, HasSubstr("30"));
  EXPECT_EQ(std::count(warnings_.begin(), warnings_.end(), '\n'), 1) << warnings_;
  ASSERT_EQ(PagesLeft().size(), 1U);
  EXPECT_THAT(TemporaryFolder::Read(PagesLeft()[0]), HasSubstr("Case 30"));
  EXPECT_THAT(suite_.ErrorLog(), IsEmpty());
  const std::string ruler = std::string(53, '*') + "\r\n";
  EXPECT_EQ(WithoutTimes(suite_.RunLog("OrvSolveOnNoResponseSvc_log_")),
            ruler + "Orvane NTService Log \r\n" + ruler +
                "Solve On No Response - NTService Started at : <time>\r\n" + ruler +
                " Solve On No Response -NTService Stopped at : <time>\r\n" + ruler);
}

TEST_P(SolveOverSmtpTest, APlainTextTemplateSendsTheTextAlone) {
  Execute(GetParam().engine == std::string_view("postgresql") ? "UPDATE EMAIL SET Mail_HTML_File = false"
                                                              : "UPDATE EMAIL SET Mail_HTML_File = 0");
  Add(26, "jaermel", "", true);
  Run();
  ASSERT_EQ(mails_.Kept("1.done"), "");
  EXPECT_EQ(mails_.Kept("1.to"), "joerg@x.example");
  EXPECT_THAT(mails_.Kept("1.eml"), testing::Not(HasSubstr("multipart")));
  EXPECT_THAT(Body(1), testing::StartsWith("Jörg Ärmel - guten Tag,\r\n\r\nWir haben keine Rückmeldung"));
  EXPECT_FALSE(mails_.HasMail(2));
  EXPECT_THAT(PagesLeft(), IsEmpty());
}

TEST_P(SolveOverSmtpTest, APersonWhomTheDirectoryDoesNotKnowEndsThePassAndTheRunGoesOn) {
  Add(26, "nobody", "", true);
  Add(27, "jdoe", "", true);
  Run();
  EXPECT_FALSE(mails_.HasMail(1));
  EXPECT_THAT(Rows("SELECT DISTINCT Q_STATUS FROM QUESTIONS"), ElementsAre("150"));
  EXPECT_THAT(
      suite_.ErrorLog(),
      ElementsAre(
          HasSubstr("OrvaneProcess.OrvaneUtilities.getUserFromID caught: The directory knows no user "
                    "nobody(1102)."),
          HasSubstr("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: Object variable or With "
                    "block variable not set (91).")));
  EXPECT_TRUE(std::filesystem::exists(suite_.Home() / "outbox" / "escalation.jsonl"));
  EXPECT_THAT(suite_.RunLog("OrvSolveOnNoResponseSvc_log_"), HasSubstr("Stopped at"));
}

TEST_P(SolveOverSmtpTest, AnAccountThatIsRefusedFindsNobody) {
  const std::filesystem::path file = suite_.Home() / "config" / "siteConfiguration.xml";
  std::string site = TemporaryFolder::Read(file);
  const std::string credential = Key("MemScriptCode", "secret");
  site.replace(site.find(credential), credential.size(), Key("MemScriptCode", "wrong"));
  suite_.Folder().Write("home/config/siteConfiguration.xml", site);
  Add(26, "jdoe", "", false);
  RunAllTheSame();
  EXPECT_FALSE(mails_.HasMail(1));
  EXPECT_THAT(Rows("SELECT Q_ID FROM REMINDER WHERE T2_DATE IS NULL"), ElementsAre("26"));
  EXPECT_THAT(suite_.ErrorLog(),
              ElementsAre(HasSubstr("OrvaneProcess.OrvaneUtilities.getUserFromID caught: "),
                          HasSubstr("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: ")));
}

TEST_P(SolveOverSmtpTest, ADirectoryThatIsNotThereFindsNobody) {
  const std::filesystem::path file = suite_.Home() / "config" / "siteConfiguration.xml";
  std::string site = TemporaryFolder::Read(file);
  site = std::regex_replace(site, std::regex("<key name=\"LDAPServer\">[^<]*<"),
                            "<key name=\"LDAPServer\">ldap://127.0.0.1:1<");
  suite_.Folder().Write("home/config/siteConfiguration.xml", site);
  Add(26, "jdoe", "", true);
  RunAllTheSame();
  EXPECT_FALSE(mails_.HasMail(1));
  EXPECT_THAT(Rows("SELECT Q_STATUS FROM QUESTIONS"), ElementsAre("150"));
  EXPECT_THAT(Rows("SELECT Q_ID FROM REMINDER"), ElementsAre("26"));
  EXPECT_THAT(suite_.ErrorLog(),
              ElementsAre(HasSubstr("OrvaneProcess.OrvaneUtilities.getUserFromID caught: "),
                          HasSubstr("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: ")));
  EXPECT_TRUE(std::filesystem::exists(suite_.Home() / "outbox" / "escalation.jsonl"));
}

// A server that does not let the job in is as one that is down: the rows go on, the page stays.
class SolveWithoutLoginTest : public SolveOverSmtpTest {};

INSTANTIATE_TEST_SUITE_P(Ways, SolveWithoutLoginTest,
                         testing::Values(kSqliteLdapLogin, kPostgresqlLdapStartTls, kMariadbLdapsSmtps),
                         NameOfWay);

TEST_P(SolveWithoutLoginTest, WithoutTheLoginOrTheAuthorityNoMailIsHandedOver) {
  const std::string way = GetParam().mail;
  Configure("user", "wrong", way == "smtps" ? "" : mails_.CertificateFile());
  Add(26, "jdoe", "", false);
  Add(27, "jaermel", "", true);
  RunAllTheSame();
  EXPECT_FALSE(mails_.HasMail(1));
  EXPECT_THAT(Rows("SELECT Q_ID FROM REMINDER WHERE T2_DATE IS NOT NULL"), ElementsAre("26"));
  EXPECT_THAT(Rows("SELECT Q_ID FROM QUESTIONS WHERE Q_STATUS = 160"), ElementsAre("27"));
  EXPECT_THAT(PagesLeft(), testing::Not(IsEmpty()));
  EXPECT_THAT(suite_.ErrorLog(), IsEmpty());
}

}  // namespace
}  // namespace orvane_test
