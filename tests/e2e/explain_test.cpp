// What "explain" tells of customers, requests and files of the demo, held against what a preview of the same
// suite says; and that it changes nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/e2e/demo_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Json = nlohmann::ordered_json;
using Strings = std::vector<std::string>;

std::vector<Json> Lines(const std::string& text) {
  std::vector<Json> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(Json::parse(line));
  return lines;
}

std::map<std::string, std::string> Tree(const fs::path& root) {
  std::map<std::string, std::string> tree;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    tree[entry.path().string()] = entry.is_regular_file() ? TemporaryFolder::Read(entry.path()) : "";
  }
  return tree;
}

class ExplainTest : public testing::Test {
 protected:
  ExplainTest() {
    MakeDemoSuite(home_);
    Sql("DELETE FROM PROSPECT WHERE PROSPECTID % 50 <> 0");
  }

  void Sql(const std::string& script) const {
    sqlite3* database = nullptr;
    sqlite3_open((home_ / "db/orvane.sqlite").c_str(), &database);
    char* message = nullptr;
    const int code = sqlite3_exec(database, script.c_str(), nullptr, nullptr, &message);
    const std::string said = message == nullptr ? "" : message;
    sqlite3_free(message);
    sqlite3_close(database);
    if (code != SQLITE_OK) throw std::runtime_error(script + ": " + said);
  }

  Outcome Explain(const std::string& job, const std::string& key, const Strings& options = {}) const {
    Strings words{"explain", "--home", home_.string(), job, key};
    words.insert(words.end(), options.begin(), options.end());
    return RunHost(words);
  }
  std::vector<Json> Explained(const std::string& job, const std::string& key) const {
    const Outcome outcome = Explain(job, key, {"--json"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return Lines(outcome.out);
  }
  static std::vector<Json> Only(const std::vector<Json>& lines, const std::string& what) {
    std::vector<Json> found;
    for (const Json& line : lines) {
      if (line["what"] == what) found.push_back(line);
    }
    return found;
  }
  // "row.delete PROSPECT", "mail.send"
  static Strings Ops(const std::vector<Json>& lines) {
    Strings ops;
    for (const Json& line : Only(lines, "effect")) {
      const Json& effect = line["effect"];
      ops.push_back(effect["op"].get<std::string>() +
                    (effect.contains("table") ? " " + effect["table"].get<std::string>() : ""));
    }
    return ops;
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
};

TEST_F(ExplainTest, TellsOfACustomerWhatWasReadAndWhetherItGoes) {
  Sql("UPDATE PROSPECT SET EMAILID = 'o''brien@x.example', LASTVISITEDTIME = '2001-02-03 04:05:06',"
      " PENDINGQUESTIONS = 0 WHERE PROSPECTID = 50;"
      "UPDATE PROSPECT SET LASTVISITEDTIME = '2001-02-03 04:05:06', PENDINGQUESTIONS = 1 WHERE PROSPECTID = "
      "100");
  for (const char* key : {"o'brien@x.example", "50"}) {
    const auto lines = Explained("dormantuserexpiry", key);
    EXPECT_THAT(Ops(lines), ElementsAre("row.delete PROSPECT"));
    const auto rows = Only(lines, "row");
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0]["row"]["LASTVISITEDTIME"], "2001-02-03 04:05:06");
    EXPECT_EQ(rows[0]["returnedBy"][0]["statement"], "SELECT * FROM PROSPECT");
    EXPECT_EQ(rows[0]["returnedBy"][0]["read"], Json({"LASTVISITEDTIME", "PENDINGQUESTIONS"}));
    EXPECT_EQ(Only(lines, "parameter")[0]["name"], "MAXDORMANCYTIME");
  }
  const Outcome kept = Explain("DormantUserExpiry", "100");
  EXPECT_EQ(kept.exitCode, 0);
  EXPECT_THAT(kept.out, AllOf(HasSubstr("MAXDORMANCYTIME = 90\n"), HasSubstr("  * PENDINGQUESTIONS  1\n"),
                              HasSubstr("\n  returned by: SELECT * FROM PROSPECT\n  -> stays as it is\n")));
}

TEST_F(ExplainTest, TellsOfARequestThatIsArchivedAndOfOneThatIsNot) {
  Sql("UPDATE QUESTIONHISTORY SET ENDSTATUSTIME = datetime('now') WHERE Q_ID = 5219");
  const auto lines = Explained("Archive", "hmueller");
  std::map<int, Json> requests;
  for (const Json& row : Only(lines, "row")) {
    if (row["table"] == "QUESTIONHISTORY") requests[row["key"]["Q_ID"]] = row;
  }
  ASSERT_GT(requests.size(), 3U);
  // The statement for this customer returned the one by its key, and not the other.
  EXPECT_THAT(requests.at(5231)["returnedBy"].back()["statement"].get<std::string>(),
              AllOf(HasSubstr("select * from QUESTIONHISTORY where"), HasSubstr("Q_ORIGINATOR='hmueller'")));
  EXPECT_EQ(requests.at(5231)["returnedBy"].back()["byKey"], true);
  ASSERT_EQ(requests.at(5219)["notReturnedBy"].size(), 1U);
  EXPECT_EQ(requests.at(5219)["notReturnedBy"][0], requests.at(5231)["returnedBy"].back()["statement"]);
  const Strings ops = Ops(lines);
  EXPECT_THAT(ops, Contains("rows.delete QUESTIONHISTORY"));
  EXPECT_THAT(ops, Contains("document.save"));
  for (const Json& effect : Only(lines, "effect")) {
    EXPECT_THAT(effect.dump(), Not(HasSubstr("\"Q_ID\":5219")));
    EXPECT_EQ(effect["outcome"], "done");
    if (effect["effect"]["op"] == "document.save") {
      EXPECT_THAT(effect["effect"]["path"].get<std::string>(), HasSubstr("hmueller"));
    }
  }
  const Outcome told = Explain("Archive", "5219");
  EXPECT_THAT(told.out, AllOf(HasSubstr("\n  not returned by: select * from QUESTIONHISTORY where"),
                              HasSubstr("\n  -> stays as it is\n"), Not(HasSubstr("would be deleted"))));
}

TEST_F(ExplainTest, TellsOfAReminderWhatIsSentAndClosed) {
  Sql("UPDATE REMINDER SET T2_DATE = '2020-01-01 00:00:00' WHERE Q_ID = 1001;"
      "UPDATE REMINDER SET T1_DATE = '2099-01-01 00:00:00' WHERE Q_ID = 1002;"
      "UPDATE REMINDER SET R_STATUS = 120 WHERE Q_ID = 1003");
  const auto concluded = Explained("SolveOnNoResponse", "1001");
  EXPECT_THAT(Ops(concluded),
              AllOf(Contains("row.update QUESTIONS"), Contains("row.insert TRANSACTIONS"),
                    Contains("mail.send").Times(1), Contains("event"), Contains("row.delete REMINDER")));
  const Outcome waiting = Explain("SolveOnNoResponse", "1002");
  EXPECT_THAT(waiting.out, AllOf(HasSubstr("  * T1_DATE   2099-01-01 00:00:00\n"), Not(HasSubstr("would be")),
                                 Not(HasSubstr("the job would"))));
  const Outcome elsewhere = Explain("SolveOnNoResponse", "1003");
  EXPECT_THAT(elsewhere.out, HasSubstr("\n  not returned by: SELECT * FROM REMINDER WHERE R_STATUS= 150\n"
                                       "  -> stays as it is: the job does not read it\n"));
}

TEST_F(ExplainTest, TellsOfRequestsAndFilesThatAreCleanedUp) {
  Sql("UPDATE QUESTIONS SET Q_STATUS = 0, Q_DATE = '2001-01-01 00:00:00' WHERE Q_ID = 1001");
  const auto lines = Explained("CleanUp", "1001");
  EXPECT_THAT(Ops(lines), AllOf(Contains("folder.delete"), Contains("rows.delete QUESTIONS"),
                                Contains("rows.delete DATAFILES")));
  for (const Json& line : Only(lines, "effect")) {
    if (line["effect"]["op"] == "folder.delete") {
      EXPECT_THAT(line["effect"]["path"].get<std::string>(), HasSubstr("/1001Q"));
    }
  }
  std::ofstream(home_ / "Data/HTML/left over.htm") << "x";
  EXPECT_THAT(Ops(Explained("CleanUp", "left over.htm")), ElementsAre("file.delete"));
  const Outcome live = Explain("CleanUp", "chat-1001.txt");
  EXPECT_THAT(live.out,
              AllOf(HasSubstr("CHATSESSIONS, SESSIONID chat-1001.txt\n"),
                    HasSubstr("/Data/CHAT/chat-1001.txt\n  found in its folder\n  -> stays as it is\n"),
                    HasSubstr("Object required (424)")));
}

TEST_F(ExplainTest, SaysWhatThePreviewSaysAndChangesNothing) {
  const auto before = Tree(folder_.Path());
  const Outcome previewed = RunHost({"preview", "--home", home_.string(), "--json", "DormantUserExpiry"});
  int checked = 0;
  for (Json line : Lines(previewed.out)) {
    if (line["op"] != "row.delete" || line["seq"].get<int>() % 9 != 0) continue;
    const auto deeds = Only(Explained("DormantUserExpiry", line["key"]["PROSPECTID"].dump()), "effect");
    ASSERT_EQ(deeds.size(), 1U);
    Json deed = deeds[0]["effect"];
    for (const char* member : {"run", "time"}) {
      deed.erase(member);
      line.erase(member);
    }
    EXPECT_EQ(deed, line);
    ++checked;
  }
  EXPECT_GT(checked, 3);
  for (const char* job : {"Archive", "CleanUp", "SolveOnNoResponse"}) Explain(job, "1001");
  EXPECT_EQ(Tree(folder_.Path()), before);
}

TEST_F(ExplainTest, MarkupAndControlCharactersInDataStayData) {
  Sql("UPDATE PROSPECT SET FIRSTNAME = '<b>' || char(27) || '[31m', LASTNAME = char(10) || 'x' WHERE "
      "PROSPECTID = 50");
  const Outcome told = Explain("DormantUserExpiry", "50");
  EXPECT_THAT(told.out, AllOf(HasSubstr("<b>\\x1B[31m\n"), HasSubstr("\\x0Ax\n"), Not(HasSubstr("\x1B"))));
}

TEST_F(ExplainTest, AnUnknownKeyOrJobIsRefusedBeforeAnythingIsPreviewed) {
  for (const char* key : {"nobody@nowhere.example", "' OR 1=1 --", "4711"}) {
    const Outcome outcome = Explain("Archive", key);
    EXPECT_EQ(outcome.exitCode, 64);
    EXPECT_THAT(outcome.err, HasSubstr(std::string(key) + ": no customer, request or file"));
    EXPECT_THAT(outcome.out, IsEmpty());
  }
  EXPECT_EQ(Explain("NoSuchJob", "50").exitCode, 64);
  EXPECT_EQ(RunHost({"explain", "--home", home_.string(), "Archive"}).exitCode, 64);
  EXPECT_EQ(Explain("Archive", "50", {"more"}).exitCode, 64);
}

TEST_F(ExplainTest, ExitsAsThePreviewWould) {
  Sql("UPDATE PARAMETERS SET PARAM_VALUE = 'many' WHERE PARAM_NAME = 'MAXDORMANCYTIME'");
  const Outcome outcome = Explain("DormantUserExpiry", "50");
  EXPECT_EQ(outcome.exitCode, 70);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("the job would end without its stop line: Type mismatch (13)"),
                                 HasSubstr("MAXDORMANCYTIME = many\n")));
  EXPECT_EQ(RunHost({"explain", "--home", "/nowhere", "Archive", "50"}).exitCode, 78);
}

}  // namespace
}  // namespace orvane_test
