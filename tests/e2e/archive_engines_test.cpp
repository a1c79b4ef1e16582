// One history made by hand, archived twice on three engines in three locales: the archive files, the rows
// that are left and the run log are those of archive_history/, to the letter but for the moments of the runs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/e2e/archive_installation.hpp"
#include "tests/support/archive_files.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using Strings = std::vector<std::string>;

std::string Text(const std::string& value) {
  std::string quoted = "'";
  for (const char c : value) quoted += c == '\'' ? "''" : std::string(1, c);
  return quoted + "'";
}

constexpr const char* kRequestColumns[] = {
    "Q_STATUS",   "Q_ORIGINATOR", "PROSPECT",  "EMAILID",      "Q_DATE",       "REGISTEREDDATE",
    "Q_DESC",     "Q_TEXT",       "A_TEXT",    "Q_PRODUCTCAT", "PRODUCTID",    "Q_CATEGORY",
    "Q_PRIORITY", "Q_SITE",       "Q_PRODUCT", "Q_OBJECT",     "Q_OBJECTNR",   "Q_REPORTED",
    "BP_NUMBER",  "D_DIRECT_TO",  "CENTER",    "Q_CALL",       "ENDSTATUSTIME"};

// A request whose other columns are null.
std::string Request(int id, const std::map<std::string, std::string>& values) {
  std::string columns = "Q_ID";
  std::string literals = std::to_string(id);
  for (const char* column : kRequestColumns) {
    columns += std::string(", ") + column;
    literals += ", " + (values.contains(column) ? values.at(column) : "null");
  }
  return "insert into QUESTIONHISTORY (" + columns + ") values (" + literals + ")";
}

// Several customers, prospects with and without addresses, every status, each column filled once and null
// once, hostile texts.
Strings History(const Engine& engine) {
  const std::string yes = engine.TrueLiteral();
  const std::string post = "\x01\x02\x03\x04 2004-01-05 10:20:30.000  The printer <b>smokes</b>";
  const std::string answer = "\x04\x03\x02\x01 2004-01-06 08:00:00.000  Müller & 佐藤 say \"off\" ]]> 😀";
  Strings statements = {
      Request(1, {{"Q_STATUS", "175"},
                  {"Q_ORIGINATOR", "'ann'"},
                  {"PROSPECT", engine.FalseLiteral()},
                  {"EMAILID", "'ann@work.example'"},
                  {"Q_DATE", "'2004-01-05 10:20:30'"},
                  {"REGISTEREDDATE", "'2004-01-05 18:05:09'"},
                  {"Q_DESC", "'smoke'"},
                  {"Q_TEXT", Text(post + post)},
                  {"A_TEXT", Text(answer)},
                  {"Q_PRODUCTCAT", "1"},
                  {"PRODUCTID", "1"},
                  {"Q_CATEGORY", "1"},
                  {"Q_PRIORITY", "2"},
                  {"Q_SITE", "'HQ'"},
                  {"Q_PRODUCT", "'LJ'"},
                  {"Q_OBJECT", "'tray & drum'"},
                  {"Q_OBJECTNR", "'0042'"},
                  {"Q_REPORTED", "'by <phone>'"},
                  {"BP_NUMBER", "2147483647"},
                  {"D_DIRECT_TO", "'desk \"2\"'"},
                  {"CENTER", "3"},
                  {"Q_CALL", "'<NULL>'"},
                  {"ENDSTATUSTIME", "'2004-02-01 00:00:00'"}}),
      Request(2, {{"Q_STATUS", "180"},
                  {"Q_ORIGINATOR", "'ann'"},
                  {"Q_DATE", "'2004-01-05 00:00:00'"},
                  {"Q_TEXT", Text("it's -1.5 \\ back\\slash")},
                  {"A_TEXT", Text("tab\there\r\nand a new line")},
                  {"PRODUCTID", "0"},
                  {"Q_CATEGORY", "0"},
                  {"Q_PRIORITY", "-2"},
                  {"Q_SITE", "' '"},
                  {"Q_PRODUCT", "''"},
                  {"BP_NUMBER", "0"},
                  {"CENTER", "0"},
                  {"ENDSTATUSTIME", "'2004-02-02 12:30:00'"}}),
      Request(3, {{"Q_STATUS", "185"},
                  {"Q_ORIGINATOR", "'bob'"},
                  {"EMAILID", "'bob@work.example'"},
                  {"Q_DATE", "'2003-12-31 23:59:59'"},
                  {"REGISTEREDDATE", "'2003-12-31 23:59:59'"},
                  {"Q_PRODUCTCAT", "99"},
                  {"PRODUCTID", "99"},
                  {"Q_CATEGORY", "99"},
                  {"ENDSTATUSTIME", "'2004-02-03 00:00:00'"}}),
      Request(4, {{"Q_STATUS", "190"},
                  {"Q_ORIGINATOR", "'zoe'"},
                  {"PROSPECT", yes},
                  {"EMAILID", "'zoe@visit.example'"},
                  {"REGISTEREDDATE", "'2004-01-31 00:00:00'"},
                  {"ENDSTATUSTIME", "'2004-02-04 00:00:00'"}}),
      // Has no address to find it by, so it stays.
      Request(5, {{"Q_ORIGINATOR", "'zoe'"}, {"PROSPECT", yes}, {"ENDSTATUSTIME", "'2004-02-04 00:00:00'"}}),
      Request(6,
              {{"Q_STATUS", "185"}, {"Q_ORIGINATOR", "'ann'"}, {"ENDSTATUSTIME", "'2104-01-01 00:00:00'"}}),
      // Ends before the second run.
      Request(7, {{"Q_STATUS", "185"}, {"Q_ORIGINATOR", "'ann'"}, {"Q_DESC", "'ends late'"}}),
      // Rings.
      Request(8, {{"Q_STATUS", "185"},
                  {"Q_ORIGINATOR", "'bell'"},
                  {"Q_TEXT", Text("a\x07")},
                  {"ENDSTATUSTIME", "'2004-02-05 00:00:00'"}}),
      Request(9, {{"Q_STATUS", "0"}, {"Q_ORIGINATOR", "'cid'"}, {"ENDSTATUSTIME", "'2004-02-05 00:00:00'"}}),
      Request(10, {{"Q_ORIGINATOR", "'cid'"},
                   {"REGISTEREDDATE", "'2004-01-31 07:08:09'"},
                   {"ENDSTATUSTIME", "'2004-02-05 00:00:00'"}}),
      Request(11,
              {{"Q_STATUS", "-1"}, {"Q_ORIGINATOR", "'cid'"}, {"ENDSTATUSTIME", "'2004-02-05 00:00:00'"}})};
  const std::string columns =
      "insert into TRANSACTIONS (Q_ID, T_NAME, T_STATUS, CENTER, T_DATE, T_COMMENT, USERCOMMENT, TIMESPENT) "
      "values (";
  for (const int id : {1, 1, 2, 4, 6, 8}) {
    statements.push_back(columns + std::to_string(id) + ", 'LBLQX3479', '160', 1, '2004-01-07 01:02:03', " +
                         Text("ümlaut & <tag>") + ", 'my ]]> own', 15)");
  }
  statements.push_back(columns + "1, null, null, null, null, null, null, null)");
  return statements;
}

// What the runs leave behind, as archive_history/LOCALE holds it: the archive files, the run log, the error
// log, and the numbers of the rows that stay.
std::map<std::string, std::string> Remains(const std::string& engineName, const std::string& locale) {
  const ArchiveInstallation installation;
  const std::unique_ptr<Engine> engine = MakeEngine(engineName, installation.suite);
  installation.Configure(engine->ConnectionString(), {{"ann", 1042, 1031}, {"cid", 77, 1041}}, "1043");
  engine->Execute("insert into PARAMETERS (PARAM_NAME, PARAM_VALUE) values ('DataFileRelativePath', 'Data')");
  engine->Execute("insert into PARAMETERS (PARAM_NAME, PARAM_VALUE) values ('ArchiveAfter', '30')");
  for (const std::string& statement : History(*engine)) engine->Execute(statement);

  const Outcome first = installation.Run({{"LC_ALL", locale}});
  EXPECT_EQ(first.exitCode, 0) << first.err;
  engine->Execute("update QUESTIONHISTORY set ENDSTATUSTIME = '2004-03-01 00:00:00' where Q_ID = 7");
  const Outcome second = installation.Run({{"LC_ALL", locale}});
  EXPECT_EQ(second.exitCode, 0) << second.err;

  ExpectArchiveFiles(installation.Archives());
  std::map<std::string, std::string> remains = installation.Files();
  remains["run-log.txt"] = installation.Log();
  for (const std::string& entry : installation.suite.ErrorLog()) remains["error-log.txt"] += entry + "\n";
  for (const std::string& id : engine->Column("select Q_ID from QUESTIONHISTORY order by Q_ID")) {
    remains["rows.txt"] += "request " + id + "\n";
  }
  for (const std::string& id : engine->Column("select Q_ID from TRANSACTIONS order by T_ID")) {
    remains["rows.txt"] += "transaction of " + id + "\n";
  }
  return remains;
}

std::map<std::string, std::string> Expected(const std::string& locale) {
  std::map<std::string, std::string> expected;
  for (const auto& entry :
       fs::directory_iterator(fs::path(ORVANE_HISTORY_FOLDER) / locale.substr(0, locale.find('.')))) {
    expected[entry.path().filename().string()] = TemporaryFolder::Read(entry.path());
  }
  return expected;
}

class ArchiveHistoryTest : public testing::TestWithParam<std::tuple<const char*, const char*>> {};

TEST_P(ArchiveHistoryTest, EndsWithExactlyTheExpectedFilesRowsAndLogs) {
  const auto [engine, locale] = GetParam();
  const std::map<std::string, std::string> remains = Remains(engine, locale);
  const std::map<std::string, std::string> expected = Expected(locale);

  Strings names;
  Strings expectedNames;
  for (const auto& [name, content] : remains) names.push_back(name);
  for (const auto& [name, content] : expected) expectedNames.push_back(name);
  EXPECT_EQ(names, expectedNames);
  for (const auto& [name, content] : expected) {
    EXPECT_EQ(remains.contains(name) ? remains.at(name) : "", content) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, ArchiveHistoryTest,
                         testing::Combine(testing::Values("sqlite", "postgresql", "mariadb"),
                                          testing::Values("C", "de_DE.UTF-8", "ja_JP.UTF-8")),
                         [](const auto& instance) {
                           return std::string(std::get<0>(instance.param)) + "_" +
                                  std::string(std::get<1>(instance.param)).substr(0, 1);
                         });

}  // namespace
}  // namespace orvane_test
