// orvane-host is killed at every point of an archive run where it touches a file or talks to the database.
// Whatever the point, each request and each transaction is afterwards in the database or in a well-formed
// archive file, and the next run goes through.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <set>
#include <sstream>

#include "tests/e2e/archive_installation.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/archive_files.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

// One engine's database of the suite, filled anew for each kill.
class CrashDatabase {
 public:
  virtual ~CrashDatabase() = default;
  virtual std::string ConnectionString() const = 0;
  virtual void Fill() = 0;
  virtual std::set<std::string> Texts(const std::string& column, const std::string& table) = 0;
};

class SqliteCrashDatabase : public CrashDatabase {
 public:
  explicit SqliteCrashDatabase(fs::path file) : file_(std::move(file)) {}

  std::string ConnectionString() const override { return "Provider=SQLite;Data Source=" + file_.string(); }
  void Fill() override {
    const fs::path filled = file_.string() + ".filled";
    if (!fs::exists(filled)) {
      Database database(filled);
      database.Execute("begin");
      database.Execute(TemporaryFolder::Read(ORVANE_SCHEMA_FOLDER "/sqlite.sql"));
      for (const std::string& statement : RowsOfThreeCustomers()) database.Execute(statement);
      database.Execute("commit");
      database.Execute("pragma journal_mode = wal");
    }
    for (const char* suffix : {"-wal", "-shm", "-journal"}) fs::remove(file_.string() + suffix);
    fs::copy_file(filled, file_, fs::copy_options::overwrite_existing);
  }
  std::set<std::string> Texts(const std::string& column, const std::string& table) override {
    const std::vector<std::string> rows = Database(file_).Rows("select " + column + " from " + table);
    return {rows.begin(), rows.end()};
  }

 private:
  fs::path file_;
};

class ServerCrashDatabase : public CrashDatabase {
 public:
  explicit ServerCrashDatabase(const std::string& server) : database_(server) {
    database_.RunSchemaFile(server + ".sql");
    session_ = database_.Connect();
  }

  std::string ConnectionString() const override { return database_.ConnectionString(); }
  void Fill() override {
    for (const std::string& statement : RowsOfThreeCustomers()) session_->Execute(statement, {});
  }
  std::set<std::string> Texts(const std::string& column, const std::string& table) override {
    std::set<std::string> texts;
    const auto rows = session_->Query("select " + column + " from " + table, {});
    while (rows->Next()) texts.insert(std::get<std::string>(rows->Value(0).Get()));
    return texts;
  }

 private:
  ServerDatabase database_;
  std::unique_ptr<ADODB::engine::Session> session_;
};

class ArchiveCrashTest : public ::testing::TestWithParam<const char*> {
 protected:
  ArchiveCrashTest() {
    const std::string engine = GetParam();
    if (engine == "sqlite") {
      database = std::make_unique<SqliteCrashDatabase>(suite.DatabaseFile());
    } else {
      database = std::make_unique<ServerCrashDatabase>(engine);
    }
    installation.Configure(database->ConnectionString(), ThreeCustomers());
  }

  fs::path Archives() const { return installation.Archives(); }

  void StartAfresh() {
    fs::remove_all(suite.Home() / "Data");
    fs::remove_all(suite.Logs());
    database->Fill();
  }

  // The points of an undisturbed run.
  long CountPoints() {
    StartAfresh();
    const fs::path count = suite.Folder().Path() / "points";
    const Outcome outcome =
        installation.Run({{"LD_PRELOAD", ORVANE_KILL_AT}, {"KILL_COUNT", count.string()}});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_TRUE(database->Texts("Q_DESC", "QUESTIONHISTORY").empty())
        << "the undisturbed run archives everything";
    return std::stol(TemporaryFolder::Read(count));
  }

  // Whether a kill can leave this content while it makes a file: the first line of a new one, or a part of
  // it.
  static bool IsUnfinishedBeginning(const std::string& content) {
    for (const std::string root : {"QuestionsArchive", "TransactionsArchive"}) {
      if (("<" + root + "></" + root + ">\r\n").rfind(content, 0) == 0) return true;
    }
    return false;
  }

  // The content of all archive files that hold anything; each must be one by its schema.
  std::string WellFormedArchives() const {
    std::string all;
    if (!fs::exists(Archives())) return all;
    for (const auto& entry : fs::directory_iterator(Archives())) {
      if (entry.path().extension() != ".xml" || IsUnfinishedBeginning(TemporaryFolder::Read(entry.path())))
        continue;
      EXPECT_EQ(ArchiveFileProblem(entry.path()), "");
      all += TemporaryFolder::Read(entry.path());
    }
    return all;
  }

  void ExpectNothingLost(const std::string& when) {
    const std::string files = WellFormedArchives();
    const std::set<std::string> requests = database->Texts("Q_DESC", "QUESTIONHISTORY");
    const std::set<std::string> transactions = database->Texts("T_NAME", "TRANSACTIONS");
    for (int id = 1; id <= kRequests; ++id) {
      const std::string text = "request-" + std::to_string(id);
      EXPECT_TRUE(requests.contains(text) || files.find(text + "<") != std::string::npos)
          << text << " lost " << when;
    }
    for (int id = 1; id <= kTransactions; ++id) {
      const std::string text = "step-" + std::to_string(id);
      EXPECT_TRUE(transactions.contains(text) || files.find(text + "<") != std::string::npos)
          << text << " lost " << when;
    }
  }

  void ExpectNextRunGoesThrough(const std::string& when) {
    const Outcome next = installation.Run({});
    EXPECT_EQ(next.exitCode, 0) << when << ": " << next.err;
    EXPECT_TRUE(database->Texts("Q_DESC", "QUESTIONHISTORY").empty()) << "the run " << when;
    EXPECT_TRUE(database->Texts("T_NAME", "TRANSACTIONS").empty()) << "the run " << when;
    ExpectNothingLost("in the run " + when);
    for (const auto& entry : fs::directory_iterator(Archives())) {
      EXPECT_EQ(entry.path().extension(), ".xml")
          << "left behind by the kill " << when << ": " << entry.path();
    }
  }

  ArchiveInstallation installation;
  HandMadeSuite& suite = installation.suite;
  std::unique_ptr<CrashDatabase> database;
};

TEST_P(ArchiveCrashTest, NothingIsLostWhereverTheRunIsKilled) {
  const long points = CountPoints();
  ASSERT_GT(points, 100);
  RecordProperty("points", std::to_string(points));
  for (long point = 1; point <= points && !HasFailure(); ++point) {
    StartAfresh();
    std::map<std::string, std::string> environment{{"LD_PRELOAD", ORVANE_KILL_AT},
                                                   {"KILL_AT", std::to_string(point)}};
    if (point % 2 == 0) environment["KILL_TORN"] = "1";
    const Outcome killed = installation.Run(environment);
    const std::string when =
        "after a kill at point " + std::to_string(point) + " of " + std::to_string(points);
    EXPECT_TRUE(killed.exitCode == -1 || point == points) << when << " ended by itself: " << killed.exitCode;
    ExpectNothingLost(when);
    ExpectNextRunGoesThrough(when);
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, ArchiveCrashTest, ::testing::Values("sqlite", "postgresql"),
                         [](const auto& instance) { return std::string(instance.param); });

}  // namespace
}  // namespace orvane_test
