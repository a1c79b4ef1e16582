// One history on three engines: the archive files, the rows that are left and the run log are the same on
// each, byte for byte but for the moments of the runs.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <regex>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

// What a run leaves behind, for the outside to look at.
struct Remains {
  std::map<std::string, std::string> files;  // name to content, moments masked
  std::string runLog;                        // moments and folders masked
  std::vector<std::string> requests;
  std::vector<std::string> transactions;
  friend bool operator==(const Remains&, const Remains&) = default;
};

std::string Text(const std::string& value) {
  std::string quoted = "'";
  for (const char c : value) quoted += c == '\'' ? "''" : std::string(1, c);
  return quoted + "'";
}

// Several customers, prospects with and without addresses, every status, nulls in every column, hostile
// texts.
std::vector<std::string> History(const std::string& trueLiteral) {
  const std::string columns =
      "insert into QUESTIONHISTORY (Q_ID, Q_STATUS, Q_ORIGINATOR, PROSPECT, EMAILID, Q_DATE, REGISTEREDDATE, "
      "Q_DESC, "
      "Q_TEXT, A_TEXT, Q_PRODUCTCAT, PRODUCTID, Q_CATEGORY, Q_PRIORITY, Q_SITE, Q_PRODUCT, BP_NUMBER, "
      "CENTER, Q_CALL, "
      "ENDSTATUSTIME) values (";
  const std::string post =
      std::string("\x01\x02\x03\x04") + " 2004-01-05 10:20:30.000  The printer <b>smokes</b>";
  const std::string answer =
      std::string("\x04\x03\x02\x01") + " 2004-01-06 08:00:00.000  Müller & 佐藤 say \"off\" ]]> 😀";
  std::vector<std::string> statements = {
      columns + "1, 175, 'ann', null, null, '2004-01-05 10:20:30', '2004-01-05 10:20:30', 'smoke', " +
          Text(post) + ", " + Text(answer) +
          ", 1, 1, 1, 2, 'HQ', 'LJ', 4711, 3, '<NULL>', '2004-02-01 00:00:00')",
      columns + "2, 180, 'ann', null, null, '2004-01-05 00:00:00', null, " +
          Text("it's -1.5 \\ back\\slash") +
          ", 'tab\there\r\nand a new line', null, 0, 0, 0, -2, null, '', 0, 0, null, '2004-02-02 12:30:00')",
      columns +
          "3, 185, 'bob', null, 'bob@work.example', null, '2003-12-31 23:59:59', 'x', 'y', 'z', 99, 99, 99, "
          "1, "
          "'', '', 1, 1, '', '2004-02-03 00:00:00')",
      columns + "4, 190, 'zoe', " + trueLiteral +
          ", 'zoe@visit.example', null, null, 'p', null, null, null, null, null, null, null, null, null, "
          "null, null, "
          "'2004-02-04 00:00:00')",
      columns + "5, null, 'zoe', " + trueLiteral +
          ", null, null, null, null, null, null, null, null, null, null, null, null, null, null, null, "
          "'2004-02-04 00:00:00')",
      columns +
          "6, 185, 'ann', null, null, null, null, 'still fresh', null, null, null, null, null, null, null, "
          "null, "
          "null, null, null, '2104-01-01 00:00:00')",
      columns +
          "7, 185, 'ann', null, null, null, null, 'never ended', null, null, null, null, null, null, null, "
          "null, "
          "null, null, null, null)",
      columns + "8, 185, 'bell', null, null, null, null, 'rings', " +
          Text("a\x07"
               "b") +
          ", null, null, null, null, null, null, null, null, null, null, '2004-02-05 00:00:00')"};
  const std::string step =
      "insert into TRANSACTIONS (Q_ID, T_NAME, T_STATUS, CENTER, T_DATE, T_COMMENT, USERCOMMENT, "
      "TIMESPENT) values (";
  for (const int id : {1, 1, 2, 4, 6, 8}) {
    statements.push_back(step + std::to_string(id) + ", 'LBLQX3479', '160', 1, '2004-01-07 01:02:03', " +
                         Text("ümlaut & <tag>") + ", null, 15)");
  }
  return statements;
}

// One engine's suite database.
class Engine {
 public:
  virtual ~Engine() = default;
  virtual std::string ConnectionString() const = 0;
  virtual void Execute(const std::string& statement) = 0;
  virtual std::vector<std::string> Column(const std::string& query) = 0;
  virtual std::string TrueLiteral() const { return "1"; }
};

class SqliteEngine : public Engine {
 public:
  explicit SqliteEngine(const fs::path& file) : file_(file), database_(file) {
    database_.Execute(TemporaryFolder::Read(ORVANE_SCHEMA_FOLDER "/sqlite.sql"));
  }
  std::string ConnectionString() const override { return "Provider=SQLite;Data Source=" + file_.string(); }
  void Execute(const std::string& statement) override { database_.Execute(statement); }
  std::vector<std::string> Column(const std::string& query) override { return database_.Rows(query); }

 private:
  fs::path file_;
  Database database_;
};

class ServerEngine : public Engine {
 public:
  explicit ServerEngine(const std::string& server) : server_(server), database_(server) {
    database_.RunSchemaFile(server + ".sql");
  }
  std::string ConnectionString() const override { return database_.ConnectionString(); }
  void Execute(const std::string& statement) override { database_.Execute(statement); }
  std::vector<std::string> Column(const std::string& query) override {
    const auto session = database_.Connect();
    const auto rows = session->Query(query, {});
    std::vector<std::string> column;
    while (rows->Next()) column.push_back(automation::ToText(rows->Value(0)));
    return column;
  }
  std::string TrueLiteral() const override { return server_ == "postgresql" ? "true" : "b'1'"; }

 private:
  std::string server_;
  ServerDatabase database_;
};

std::string Masked(std::string text, const HandMadeSuite& suite) {
  const std::string home = suite.Home().string();
  for (std::size_t at = text.find(home); at != std::string::npos; at = text.find(home, at)) {
    text.replace(at, home.size(), "<home>");
  }
  return std::regex_replace(text, std::regex(R"(\d{1,4}-\d{1,2}-\d{1,4} \d\d:\d\d:\d\d)"), "<time>");
}

Remains ArchiveOn(const std::string& engineName, const std::string& locale) {
  HandMadeSuite suite;
  std::unique_ptr<Engine> engine;
  if (engineName == "sqlite") {
    engine = std::make_unique<SqliteEngine>(suite.DatabaseFile());
  } else {
    engine = std::make_unique<ServerEngine>(engineName);
  }
  Database catalogue(suite.CatalogueFile());
  catalogue.Execute(TemporaryFolder::Read(ORVANE_SCHEMA_FOLDER "/sqlite-ecatalog.sql"));
  catalogue.Execute(
      "insert into FAQCATEGORY (FAQCATEGORYID, FAQCATEGORYDESCRIPTION) values (1, 'Smoke');"
      "insert into PRODUCTCATEGORY (CATEGORYID, CATEGORYNAME) values (1, 'Printers');"
      "insert into PRODUCT (PRODUCTID, PRODUCTDESCRIPTION) values (1, 'Laser 40')");
  suite.Folder().Write(
      "home/config/siteConfiguration.xml",
      "<siteConfiguration><product name=\"Orvane\"><connection name=\"Orvane\">" +
          engine->ConnectionString() +
          "</connection></product><product name=\"VnServer\"><connection name=\"ECatalog\">"
          "Provider=SQLite;Data Source=db\\ecatalog.sqlite</connection></product>"
          "<section name=\"COMMONPARAMETERS\"><key name=\"DEFAULTLANGUAGE\">1043</key></section>"
          "<section name=\"MEMBERSHIP\"><key name=\"MemScriptUser\">cn=orvane</key>"
          "<key name=\"MemScriptCode\">secret</key><key name=\"LDAPRoot\"></key><key "
          "name=\"LDAPServer\"></key>"
          "</section></siteConfiguration>");
  suite.Folder().Write("home/config/directory.ldif",
                       "dn: cn=orvane\nobjectClass: person\ncn: orvane\nsn: orvane\nuserPassword: secret\n\n"
                       "dn: uid=ann\nobjectClass: inetOrgPerson\nuid: ann\ncn: Ann\nsn: Ann\n"
                       "orvaneBusinessPartner: 1042\norvaneLocale: 1031\norvaneLanguageID: 1031\n");
  engine->Execute("insert into PARAMETERS (PARAM_NAME, PARAM_VALUE) values ('DataFileRelativePath', 'Data')");
  engine->Execute("insert into PARAMETERS (PARAM_NAME, PARAM_VALUE) values ('ArchiveAfter', '30')");
  for (const std::string& statement : History(engine->TrueLiteral())) engine->Execute(statement);

  const std::vector<std::string> run = {"run", "--home", suite.Home().string(), "Archive"};
  const Outcome first = RunHost(run, {{"LC_ALL", locale}});
  EXPECT_EQ(first.exitCode, 0) << first.err;
  // A later run finds one more request of a customer who has files already.
  engine->Execute("update QUESTIONHISTORY set ENDSTATUSTIME = '2004-03-01 00:00:00' where Q_ID = 7");
  const Outcome second = RunHost(run, {{"LC_ALL", locale}});
  EXPECT_EQ(second.exitCode, 0) << second.err;

  Remains remains;
  for (const auto& entry : fs::directory_iterator(suite.Home() / "Data" / "Archives")) {
    remains.files[entry.path().filename().string()] = Masked(TemporaryFolder::Read(entry.path()), suite);
    const bool questions = entry.path().string().find("_SR.xml") != std::string::npos;
    const std::string check = std::string("xmllint --noout --schema " ORVANE_SCHEMA_FOLDER "/archive-") +
                              (questions ? "questions" : "transactions") + ".xsd '" + entry.path().string() +
                              "' >/dev/null 2>&1";
    EXPECT_EQ(std::system(check.c_str()), 0) << entry.path();
  }
  remains.runLog = Masked(suite.RunLog("OrvArchiveSvc_log_"), suite);
  remains.requests = engine->Column("select Q_ID from QUESTIONHISTORY order by Q_ID");
  remains.transactions = engine->Column("select Q_ID from TRANSACTIONS order by T_ID");
  return remains;
}

class ArchiveEnginesTest : public ::testing::TestWithParam<std::tuple<const char*, const char*>> {};

TEST_P(ArchiveEnginesTest, LeavesWhatItLeavesOnSqlite) {
  const auto [engine, locale] = GetParam();
  const Remains expected = ArchiveOn("sqlite", locale);
  const Remains actual = ArchiveOn(engine, locale);

  EXPECT_EQ(actual.requests, expected.requests);
  EXPECT_EQ(actual.transactions, expected.transactions);
  for (const auto& [name, content] : expected.files) {
    EXPECT_EQ(actual.files.contains(name) ? actual.files.at(name) : "<missing>", content) << name;
  }
  EXPECT_EQ(actual.files.size(), expected.files.size());
  EXPECT_EQ(actual.runLog, expected.runLog);
}

INSTANTIATE_TEST_SUITE_P(Engines, ArchiveEnginesTest,
                         ::testing::Combine(::testing::Values("postgresql", "mariadb"),
                                            ::testing::Values("C", "de_DE.UTF-8", "ja_JP.UTF-8")),
                         [](const auto& instance) {
                           return std::string(std::get<0>(instance.param)) + "_" +
                                  std::string(std::get<1>(instance.param)).substr(0, 1);
                         });

// On SQLite alone, against what the formats promise.
TEST(ArchiveHistoryTest, EndsWithExactlyTheExpectedFilesRowsAndLog) {
  const Remains remains = ArchiveOn("sqlite", "C");

  EXPECT_EQ(remains.requests, (std::vector<std::string>{"5", "6", "8"}));
  EXPECT_EQ(remains.transactions, (std::vector<std::string>{"6", "8"}));
  std::vector<std::string> names;
  for (const auto& [name, content] : remains.files) names.push_back(name);
  EXPECT_EQ(names, (std::vector<std::string>{"BP1042_ann_SR.xml", "BP1042_ann_trans.xml", "NoBP__SR.xml",
                                             "NoBP__trans.xml", "NoBP_bell_SR.xml", "NoBP_bob_SR.xml",
                                             "NoBP_bob_trans.xml", "NoBP_zoe@visit.example_SR.xml",
                                             "NoBP_zoe@visit.example_trans.xml"}));
}

}  // namespace
}  // namespace orvane_test
