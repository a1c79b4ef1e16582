// An installation made for the archive job alone, on any engine, run by the real program.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_state.hpp"

namespace orvane_test {

// One engine's suite database, with the tables of schema/.
class Engine {
 public:
  virtual ~Engine() = default;
  virtual std::string ConnectionString() const = 0;
  virtual void Execute(const std::string& statement) = 0;
  // All of them in one transaction.
  virtual void ExecuteAll(const std::vector<std::string>& statements) = 0;
  // The first column of a query's rows, as text.
  virtual std::vector<std::string> Column(const std::string& query) = 0;
  virtual std::string TrueLiteral() const { return "1"; }
  virtual std::string FalseLiteral() const { return "0"; }
};

struct Person {
  std::string id;
  int partner = 0;
  int locale = 1033;
};

// A catalogue with one category, one product category and one product, each numbered 1.
class ArchiveInstallation {
 public:
  // What siteConfiguration.xml and directory.ldif hold.
  void Configure(const std::string& connectionString, const std::vector<Person>& people,
                 const std::string& defaultLanguage = "1033") const;
  // `sql` on the catalogue.
  void Catalogue(const std::string& sql) const;

  std::filesystem::path Home() const { return suite.Home(); }
  std::filesystem::path Archives() const { return suite.Home() / "Data" / "Archives"; }
  // As the run log spells it, with "<home>" for the installation.
  static std::string Path(const std::string& name) { return "<home>\\Data\\Archives\\" + name; }

  Outcome Run(const std::map<std::string, std::string>& environment = {}) const;

  // Content by name; moments of runs as "<time>".
  std::map<std::string, std::string> Files() const;
  // The run log; moments as "<time>", the installation as "<home>".
  std::string Log() const;
  // Lines of the run log without rulers and moments.
  std::vector<std::string> Messages() const;
  std::string Masked(std::string text) const;

  HandMadeSuite suite;

 private:
  void MakeCatalogue() const;
};

// `name`: "sqlite", "postgresql", "mariadb". The embedded one holds its file only while it is asked
// something.
enum class Tables { OfTheSchema, None };
std::unique_ptr<Engine> MakeEngine(const std::string& name, const HandMadeSuite& suite,
                                   Tables tables = Tables::OfTheSchema);
// A database on a server of the caller's own, which must outlive it.
std::unique_ptr<Engine> MakeEngine(const Server& server, const std::string& name);

// The rows of most failure tests: three customers ("ann", "bob", "eve"), two requests each, two transactions
// a request. The description of request N is "request-N", the name of transaction N "step-N".
inline constexpr int kRequests = 6;
inline constexpr int kTransactions = 12;
std::vector<Person> ThreeCustomers();
std::vector<std::string> RowsOfThreeCustomers();

// How often each text of the rows above stands in the database or in a file of the archive folder, in that
// order: requests 1 to 6, transactions 1 to 12.
std::vector<int> Copies(Engine& engine, const ArchiveInstallation& installation);
std::vector<int> Copies(Engine& engine, const std::filesystem::path& archives);

// The customers who have requests in the database.
std::vector<std::string> CustomersLeft(Engine& engine);

// Each request and each transaction of those rows is in the database or in an archive file, as often as they
// have been filled in. Files that hold nothing yet may be unfinished; all others must be archive files.
void ExpectNothingLost(Engine& engine, const ArchiveInstallation& installation, const std::string& when,
                       int times = 1);

// An undisturbed run archives everything that is left, and leaves nothing beside the archive files.
void ExpectNextRunGoesThrough(Engine& engine, const ArchiveInstallation& installation,
                              const std::string& when, int times = 1);

}  // namespace orvane_test
