// The commands that look at runs, with the suite's databases on a server: they tell what they tell of an
// embedded one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using ADODB::engine::Session;
using testing::HasSubstr;
using Strings = std::vector<std::string>;

// A demo suite, on a server if one is named; the jobs have the rights of their account there.
class Suite {
 public:
  explicit Suite(const std::string& server = {}) {
    Strings words{"init", home_.string(), "--demo"};
    if (!server.empty()) {
      orvane_ = std::make_unique<ServerDatabase>(server);
      catalogue_ = std::make_unique<ServerDatabase>(server);
      words.insert(words.end(),
                   {"--database", orvane_->ConnectionString(), "--catalog", catalogue_->ConnectionString()});
    }
    const Outcome made = RunHost(words);
    if (made.exitCode != 0) throw std::runtime_error(made.err);
    if (server.empty()) return;
    orvane_->GrantJobs("grants-" + server + ".sql");
    catalogue_->GrantJobs("grants-" + server + "-ecatalog.sql");
    Replace(orvane_->ConnectionString(), orvane_->JobsConnectionString());
    Replace(catalogue_->ConnectionString(), catalogue_->JobsConnectionString());
  }

  Outcome Host(Strings words) const {
    words.insert(words.begin() + 1, {"--home", home_.string()});
    return RunHost(words);
  }
  const fs::path& Folder() const { return folder_.Path(); }
  fs::path Journals() const { return home_ / "journal"; }

  // A session of the owner's.
  std::unique_ptr<Session> Connect() const {
    if (orvane_) return orvane_->Connect();
    return ADODB::sqlite::MakeProvider({})->Connect(ADODB::engine::ConnectionString::Parse(
        "Provider=SQLite;Data Source=" + (home_ / "db/orvane.sqlite").string()));
  }
  void Grant(const std::string& right, const std::string& table) const {
    const auto text = ADODB::engine::ConnectionString::Parse(orvane_->JobsConnectionString());
    orvane_->Execute("GRANT " + right + " ON " + table + " TO " + text.Value("UID").value_or(""));
  }
  std::string Archive() const {
    const Outcome outcome = Host({"run", "Archive"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    for (const auto& entry : fs::directory_iterator(Journals())) {
      if (entry.path().string().ends_with("-Archive.jsonl")) return entry.path().stem().string();
    }
    return {};
  }

  // Leads the suite to a server that does not answer.
  void Unplug(const std::string& driver) const {
    Replace("Provider=SQLite;Data Source=db\\orvane.sqlite",
            "Driver={" + driver + "};Server=127.0.0.1;Port=1;Database=x;UID=x;PWD=x");
  }

 private:
  void Replace(const std::string& what, const std::string& with) const {
    const std::string file = "home/config/siteConfiguration.xml";
    std::string text = TemporaryFolder::Read(folder_.Path() / file);
    const std::size_t at = text.find(what);
    if (at == std::string::npos) throw std::runtime_error(what + " is not in the site configuration");
    folder_.Write(file, text.replace(at, what.size(), with));
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
  std::unique_ptr<ServerDatabase> orvane_;
  std::unique_ptr<ServerDatabase> catalogue_;
};

// The rows of requests and transactions, each as its values.
Strings Rows(const Suite& suite) {
  Strings shown;
  const auto session = suite.Connect();
  for (const char* table : {"QUESTIONHISTORY", "TRANSACTIONS"}) {
    const auto rows = session->Query(std::string("SELECT * FROM ") + table, {});
    while (rows->Next()) {
      std::string line = table;
      for (std::size_t i = 0; i < rows->Columns().size(); ++i) {
        const automation::Variant value = rows->Value(i);
        line += '|' + std::to_string(value.Get().index()) + ' ';
        if (const auto* moment = std::get_if<automation::DateTime>(&value.Get())) {
          line += std::to_string(moment->UnixMicroseconds());
        } else {
          line += automation::ToTextOrEmpty(value);
        }
      }
      shown.push_back(std::move(line));
    }
  }
  std::sort(shown.begin(), shown.end());
  return shown;
}

// Without moments, runs, numbers of lines, the suite's folder and the names of pages.
std::string Masked(std::string text, const Suite& suite) {
  const std::string folder = suite.Folder().string();
  for (std::size_t at = 0; (at = text.find(folder, at)) != std::string::npos;) {
    text.replace(at, folder.size(), "FOLDER");
  }
  static const std::regex kMoment(R"(\d{1,4}-\d{1,2}-\d{1,4}[ T]\d\d:\d\d:\d\d(\.\d+)?Z?)");
  static const std::regex kDrawn(R"x("run":"[^"]*"|"seq":[0-9]+|[0-9]+\.htm\b)x");
  text = std::regex_replace(std::regex_replace(text, kMoment, "MOMENT"), kDrawn, "DRAWN");
  // A page may be in the way of the next of the same name, and is deleted then.
  std::string kept;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.find("\"file.delete\"") == std::string::npos) kept += line + '\n';
  }
  return kept;
}

class CommandsServersTest : public testing::TestWithParam<const char*> {};

TEST_P(CommandsServersTest, ExplainTellsWhatItTellsOfAnEmbeddedSuite) {
  const Suite embedded;
  const Suite onServer(GetParam());
  for (const auto& [job, key] :
       {std::pair("DormantUserExpiry", "customer3@mail.example"), std::pair("DormantUserExpiry", "1"),
        std::pair("Archive", "hmueller"), std::pair("Archive", "5231"),
        std::pair("SolveOnNoResponse", "jdoe"), std::pair("SolveOnNoResponse", "1007"),
        std::pair("CleanUp", "1101"), std::pair("CleanUp", "chat-1001.txt")}) {
    const Outcome expected = embedded.Host({"explain", "--json", job, key});
    const Outcome found = onServer.Host({"explain", "--json", job, key});
    EXPECT_EQ(found.exitCode, 0) << found.err;
    EXPECT_EQ(Masked(found.out, onServer), Masked(expected.out, embedded)) << job << ' ' << key;
  }
  EXPECT_EQ(onServer.Host({"explain", "Archive", "' OR '1'='1"}).exitCode, 64);
}

TEST_P(CommandsServersTest, RestorePutsEveryRowBackAsItWas) {
  const Suite suite(GetParam());
  const auto before = Rows(suite);
  const std::string run = suite.Archive();
  const auto archived = Rows(suite);
  ASSERT_LT(archived.size() + 100, before.size());

  // The jobs need no right to insert requests.
  const Outcome refused = suite.Host({"restore", run, "--apply"});
  EXPECT_EQ(refused.exitCode, 70);
  EXPECT_THAT(refused.err, HasSubstr("may this account insert into QUESTIONHISTORY and TRANSACTIONS?"));
  EXPECT_EQ(Rows(suite), archived);

  suite.Grant("INSERT", "QUESTIONHISTORY");
  const Outcome applied = suite.Host({"restore", run, "--apply"});
  EXPECT_EQ(applied.exitCode, 0) << applied.err;
  EXPECT_EQ(Rows(suite), before);
  EXPECT_EQ(suite.Host({"restore", run, "--apply"}).exitCode, 70);
  EXPECT_EQ(Rows(suite), before);
}

TEST_P(CommandsServersTest, RestoreTakesTheJournalOfAnotherEnginesRun) {
  for (const bool fromServer : {false, true}) {
    const Suite from(fromServer ? GetParam() : "");
    const Suite to(fromServer ? "" : GetParam());
    const auto before = Rows(from);
    const std::string run = from.Archive();
    const auto archived = Rows(from);
    Strings expected;
    std::set_difference(before.begin(), before.end(), archived.begin(), archived.end(),
                        std::back_inserter(expected));
    fs::create_directory(to.Journals());
    fs::copy_file(from.Journals() / (run + ".jsonl"), to.Journals() / (run + ".jsonl"));
    const auto session = to.Connect();
    for (const char* table : {"QUESTIONHISTORY", "TRANSACTIONS"}) {
      session->Execute(std::string("DELETE FROM ") + table, {});
    }
    if (!fromServer) to.Grant("INSERT", "QUESTIONHISTORY");
    const Outcome applied = to.Host({"restore", run, "--apply"});
    EXPECT_EQ(applied.exitCode, 0) << applied.err;
    EXPECT_EQ(Rows(to), expected);
  }
}

TEST_P(CommandsServersTest, AServerThatIsDownIsOneToEveryCommand) {
  const Suite suite;
  const std::string run = suite.Archive();
  suite.Unplug(GetParam() == std::string("mariadb") ? "MariaDB Unicode" : "PostgreSQL Unicode");
  for (const Strings& words :
       {Strings{"run", "Archive"}, Strings{"preview", "Archive"}, Strings{"explain", "Archive", "5231"},
        Strings{"restore", run}, Strings{"restore", "--apply", run}}) {
    EXPECT_EQ(suite.Host(words).exitCode, 69) << words[0];
  }
}

INSTANTIATE_TEST_SUITE_P(Servers, CommandsServersTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return std::string(server.param); });

}  // namespace
}  // namespace orvane_test
