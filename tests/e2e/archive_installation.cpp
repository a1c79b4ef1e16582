#include "tests/e2e/archive_installation.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

#include "tests/servers/server_database.hpp"
#include "tests/support/archive_files.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

class SqliteEngine : public Engine {
 public:
  SqliteEngine(const fs::path& file, Tables tables) : file_(file) {
    if (tables == Tables::OfTheSchema) Execute(TemporaryFolder::Read(ORVANE_SCHEMA_FOLDER "/sqlite.sql"));
  }
  std::string ConnectionString() const override { return "Provider=SQLite;Data Source=" + file_.string(); }
  void Execute(const std::string& statement) override { Database(file_).Execute(statement); }
  void ExecuteAll(const std::vector<std::string>& statements) override {
    Database database(file_);
    database.Execute("begin");
    for (const std::string& statement : statements) database.Execute(statement);
    database.Execute("commit");
  }
  std::vector<std::string> Column(const std::string& query) override { return Database(file_).Rows(query); }

 private:
  fs::path file_;
};

class ServerEngine : public Engine {
 public:
  ServerEngine(const Server& server, const std::string& name, Tables tables)
      : name_(name), database_(server, name) {
    if (tables == Tables::OfTheSchema) database_.RunSchemaFile(name + ".sql");
  }
  std::string ConnectionString() const override { return database_.ConnectionString(); }
  void Execute(const std::string& statement) override { ExecuteAll({statement}); }
  void ExecuteAll(const std::vector<std::string>& statements) override {
    ADODB::engine::Session& session = Connected();
    session.Begin();
    for (const std::string& statement : statements) session.Execute(statement, {});
    session.Commit();
  }
  std::vector<std::string> Column(const std::string& query) override {
    const auto rows = Connected().Query(query, {});
    std::vector<std::string> column;
    while (rows->Next()) column.push_back(automation::ToText(rows->Value(0)));
    return column;
  }
  std::string TrueLiteral() const override { return name_ == "postgresql" ? "true" : "b'1'"; }
  std::string FalseLiteral() const override { return name_ == "postgresql" ? "false" : "b'0'"; }

 private:
  // One session for all; another one when the server has been down since.
  ADODB::engine::Session& Connected() {
    if (session_ && !session_->Ping()) session_.reset();
    if (!session_) session_ = database_.Connect();
    return *session_;
  }

  std::string name_;
  ServerDatabase database_;
  std::unique_ptr<ADODB::engine::Session> session_;
};

int Occurrences(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// Whether a new file is left so when it is cut off while it is made: its first line, or a part of it.
bool IsUnfinished(const std::string& content) {
  for (const std::string root : {"QuestionsArchive", "TransactionsArchive"}) {
    if (("<" + root + "></" + root + ">\r\n").rfind(content, 0) == 0) return true;
  }
  return false;
}

}  // namespace

std::unique_ptr<Engine> MakeEngine(const std::string& name, const HandMadeSuite& suite, Tables tables) {
  if (name == "sqlite") return std::make_unique<SqliteEngine>(suite.DatabaseFile(), tables);
  return std::make_unique<ServerEngine>(Server::Shared(name), name, tables);
}

std::unique_ptr<Engine> MakeEngine(const Server& server, const std::string& name) {
  return std::make_unique<ServerEngine>(server, name, Tables::OfTheSchema);
}

void ArchiveInstallation::MakeCatalogue() const {
  if (fs::exists(suite.CatalogueFile())) return;
  Database catalogue(suite.CatalogueFile());
  catalogue.Execute(TemporaryFolder::Read(ORVANE_SCHEMA_FOLDER "/sqlite-ecatalog.sql"));
  catalogue.Execute(
      "insert into FAQCATEGORY (FAQCATEGORYID, FAQCATEGORYDESCRIPTION) values (1, 'Smoke');"
      "insert into PRODUCTCATEGORY (CATEGORYID, CATEGORYNAME) values (1, 'Printers');"
      "insert into PRODUCT (PRODUCTID, PRODUCTDESCRIPTION) values (1, 'Laser 40')");
}

void ArchiveInstallation::Catalogue(const std::string& sql) const {
  MakeCatalogue();
  Database(suite.CatalogueFile()).Execute(sql);
}

void ArchiveInstallation::Configure(const std::string& connectionString, const std::vector<Person>& people,
                                    const std::string& defaultLanguage) const {
  MakeCatalogue();
  suite.Folder().Write(
      "home/config/siteConfiguration.xml",
      "<siteConfiguration><product name=\"Orvane\"><connection name=\"Orvane\">" + connectionString +
          "</connection></product><product name=\"VnServer\"><connection name=\"ECatalog\">"
          "Provider=SQLite;Data Source=db\\ecatalog.sqlite</connection></product>"
          "<section name=\"COMMONPARAMETERS\"><key name=\"DEFAULTLANGUAGE\">" +
          defaultLanguage +
          "</key></section><section name=\"MEMBERSHIP\"><key name=\"MemScriptUser\">cn=orvane</key>"
          "<key name=\"MemScriptCode\">secret</key><key name=\"LDAPRoot\"></key>"
          "<key name=\"LDAPServer\"></key></section></siteConfiguration>");
  std::string directory =
      "dn: cn=orvane\nobjectClass: person\ncn: orvane\nsn: orvane\nuserPassword: secret\n";
  for (const Person& person : people) {
    directory += "\ndn: uid=" + person.id + "\nobjectClass: inetOrgPerson\nuid: " + person.id +
                 "\ncn: " + person.id + "\nsn: " + person.id +
                 "\norvaneBusinessPartner: " + std::to_string(person.partner) +
                 "\norvaneLocale: " + std::to_string(person.locale) +
                 "\norvaneLanguageID: " + std::to_string(person.locale) + "\n";
  }
  suite.Folder().Write("home/config/directory.ldif", directory);
}

Outcome ArchiveInstallation::Run(const std::map<std::string, std::string>& environment) const {
  return RunHost({"run", "--home", Home().string(), "OrvaneProcess.Archive"}, environment);
}

std::string ArchiveInstallation::Masked(std::string text) const {
  const std::string home = Home().string();
  for (std::size_t at = text.find(home); at != std::string::npos; at = text.find(home, at)) {
    text.replace(at, home.size(), "<home>");
  }
  // A run's own moments: an entry's, and at the beginning of a line of the log.
  static const std::regex entry(R"((DateArchived=")[^"]*")");
  static const std::regex line(R"((^|\n)\d{1,4}-\d{1,2}-\d{1,4} \d\d:\d\d:\d\d(  : ))");
  text = std::regex_replace(text, entry, "$1<time>\"");
  return std::regex_replace(text, line, "$1<time>$2");
}

std::map<std::string, std::string> ArchiveInstallation::Files() const {
  std::map<std::string, std::string> files;
  if (!fs::exists(Archives())) return files;
  for (const auto& entry : fs::directory_iterator(Archives())) {
    files[entry.path().filename().string()] = Masked(TemporaryFolder::Read(entry.path()));
  }
  return files;
}

std::string ArchiveInstallation::Log() const {
  return Masked(suite.RunLog("OrvArchiveSvc_log_"));
}

std::vector<std::string> ArchiveInstallation::Messages() const {
  const std::string start = "<time>  : ";
  std::vector<std::string> messages;
  std::istringstream lines(Log());
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.rfind(start, 0) == 0) messages.push_back(line.substr(start.size()));
  }
  return messages;
}

std::vector<Person> ThreeCustomers() {
  return {{"ann", 7}, {"bob", 7}, {"eve", 7}};
}

std::vector<std::string> RowsOfThreeCustomers() {
  std::vector<std::string> statements = {"delete from TRANSACTIONS", "delete from QUESTIONHISTORY",
                                         "delete from PARAMETERS",
                                         "insert into PARAMETERS values ('DataFileRelativePath', 'Data')",
                                         "insert into PARAMETERS values ('ArchiveAfter', '1')"};
  const std::vector<Person> customers = ThreeCustomers();
  for (int id = 1; id <= kRequests; ++id) {
    const std::string number = std::to_string(id);
    statements.push_back(
        "insert into QUESTIONHISTORY (Q_ID, Q_STATUS, Q_ORIGINATOR, Q_DESC, ENDSTATUSTIME) values (" +
        number + ", 185, '" + customers[static_cast<std::size_t>(id) % customers.size()].id + "', 'request-" +
        number + "', '2004-01-01 00:00:00')");
  }
  for (int id = 1; id <= kTransactions; ++id) {
    statements.push_back("insert into TRANSACTIONS (Q_ID, T_NAME) values (" + std::to_string((id + 1) / 2) +
                         ", 'step-" + std::to_string(id) + "')");
  }
  return statements;
}

std::vector<int> Copies(Engine& engine, const ArchiveInstallation& installation) {
  return Copies(engine, installation.Archives());
}

std::vector<int> Copies(Engine& engine, const fs::path& archives) {
  std::string all;
  if (fs::exists(archives)) {
    for (const auto& entry : fs::directory_iterator(archives)) {
      if (entry.path().extension() == ".xml") all += TemporaryFolder::Read(entry.path());
    }
  }
  for (const std::string& text : engine.Column("select Q_DESC from QUESTIONHISTORY")) all += text + "<";
  for (const std::string& text : engine.Column("select T_NAME from TRANSACTIONS")) all += text + "<";
  std::vector<int> copies;
  for (int id = 1; id <= kRequests; ++id) {
    copies.push_back(Occurrences(all, "request-" + std::to_string(id) + "<"));
  }
  for (int id = 1; id <= kTransactions; ++id) {
    copies.push_back(Occurrences(all, "step-" + std::to_string(id) + "<"));
  }
  return copies;
}

std::vector<std::string> CustomersLeft(Engine& engine) {
  return engine.Column("select distinct Q_ORIGINATOR from QUESTIONHISTORY order by Q_ORIGINATOR");
}

void ExpectNothingLost(Engine& engine, const ArchiveInstallation& installation, const std::string& when,
                       int times) {
  EXPECT_THAT(Copies(engine, installation), testing::Each(testing::Ge(times))) << when;
  std::set<std::string> others;
  for (const auto& [name, content] : installation.Files()) {
    if (!name.ends_with(".xml") || IsUnfinished(content)) others.insert(name);
  }
  ExpectArchiveFiles(installation.Archives(), others);
}

void ExpectNextRunGoesThrough(Engine& engine, const ArchiveInstallation& installation,
                              const std::string& when, int times) {
  EXPECT_EQ(installation.Run().exitCode, 0) << when;
  EXPECT_THAT(CustomersLeft(engine), testing::IsEmpty()) << "the run " << when;
  EXPECT_THAT(engine.Column("select T_ID from TRANSACTIONS"), testing::IsEmpty()) << "the run " << when;
  EXPECT_THAT(Copies(engine, installation), testing::Each(testing::Ge(times))) << "the run " << when;
  ExpectArchiveFiles(installation.Archives());  // and nothing else
}

}  // namespace orvane_test
