// Databases for the tests of jobs: temporary SQLite files behind the ADODB classes of a TestRuntime, or, with
// ORVANE_TEST_ENGINE in the environment, databases on a server of the tests.
//
//   TestRuntime runtime;
//   SuiteDatabases databases(runtime);
//   databases.orvane.Run("CREATE TABLE PARAMETERS(PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(255));"
//                        "INSERT INTO PARAMETERS VALUES('MAXDORMANCYTIME','30')");
//   ... run the job ...
//   EXPECT_THAT(databases.orvane.Rows("SELECT * FROM PARAMETERS"), ElementsAre("MAXDORMANCYTIME|30"));
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/doubles/faulty_provider.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

struct sqlite3;

namespace orvane_test {

class ServerBackend;

// The providers of all engines; a relative path of the embedded engine starts at `folder`.
std::vector<std::shared_ptr<ADODB::engine::Provider>> TestProviders(const std::filesystem::path& folder = {});

// A database file (or a database on a server), with a connection of the test's own beside the platform's.
class SqliteDatabase {
 public:
  // Makes the file, in WAL mode as the suite's own databases are, or with a rollback journal.
  explicit SqliteDatabase(std::filesystem::path file, bool wal = true);
  ~SqliteDatabase();
  SqliteDatabase(const SqliteDatabase&) = delete;
  SqliteDatabase& operator=(const SqliteDatabase&) = delete;

  // Runs one or more statements; throws std::runtime_error with SQLite's message.
  void Run(std::string_view script);

  // Each row as its values joined by "|", NULL for a null.
  std::vector<std::string> Rows(std::string_view sql);
  // The first value of the first row, empty when there is none.
  std::string Value(std::string_view sql);

  std::string ConnectionString() const;
  // Makes the tables of schema/ENGINE.sql, or with "-ecatalog.sql" those of the catalogue.
  void MakeSuiteTables(std::string_view suffix = ".sql");
  const std::filesystem::path& File() const { return file_; }

 private:
  std::filesystem::path file_;
  sqlite3* database_ = nullptr;
  std::unique_ptr<ServerBackend> server_;
};

// The suite's database and its catalogue, both empty, with the ADODB classes registered in `runtime` and both
// connection strings set in its configuration. All statements of the jobs pass `faults`.
class SuiteDatabases {
 public:
  explicit SuiteDatabases(TestRuntime& runtime, bool wal = true);

  TemporaryFolder folder;
  SqliteDatabase orvane;
  SqliteDatabase catalogue;
  std::shared_ptr<Faults> faults = std::make_shared<Faults>();
};

}  // namespace orvane_test
