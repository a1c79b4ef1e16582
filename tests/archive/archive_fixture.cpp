#include "tests/archive/archive_fixture.hpp"

#include <chrono>
#include <random>
#include <sstream>
#include <thread>

#include "components/interfaces/sql_conversion.hpp"
#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/msxml2/registration.hpp"
#include "platform/scripting/dictionary/registration.hpp"
#include "platform/scripting/local/registration.hpp"
#include "suite/sql_conversion/sql_conversion.hpp"

namespace orvane_test {
namespace {

using automation::ClassTable;

// What the tests of the job replace by nothing else: dictionaries, conversion of texts, the directory's
// people and a file-handling component that remembers.
std::shared_ptr<Directory> RegisterSurroundings(ClassTable& classes,
                                                const std::shared_ptr<FileHandlingState>& state,
                                                const std::filesystem::path& archives) {
  Scripting::RegisterDictionary(classes);
  state->folder = archives;
  RegisterFakeFileHandling(classes, state);
  OrvCommon::RegisterSqlConversion(classes);
  auto directory = RegisterFakeDirectory(classes);
  for (const char* person : {"jdoe", "zoe", "ann"}) directory->people[person] = {};
  return directory;
}

std::shared_ptr<ClassTable> RealFiles() {
  auto classes = std::make_shared<ClassTable>();
  Scripting::local::RegisterClasses(*classes);
  return classes;
}

std::shared_ptr<ClassTable> RealDocuments() {
  auto classes = std::make_shared<ClassTable>();
  MSXML2::RegisterClasses(*classes);
  return classes;
}

// Connections of the test's own go to the real classes, past the journal.
std::shared_ptr<ClassTable> RealDatabases() {
  auto classes = std::make_shared<ClassTable>();
  ADODB::RegisterClasses(*classes, TestProviders());
  return classes;
}

}  // namespace

ArchiveSuite::ArchiveSuite()
    : home(folder.Path() / "suite" / "home"),
      archives(home / "Data" / "Archives"),
      orvane(folder.Path() / "orvane.sqlite"),
      catalogue(folder.Path() / "ecatalog.sqlite"),
      databases(RealDatabases()),
      journal(RegisterWatchedAdodb(test.runtime.classes, databases)) {
  std::filesystem::create_directories(home);
  ClassTable& classes = test.runtime.classes;

  classes.Register("Scripting.FileSystemObject", [scripting = RealFiles(), faults = faults] {
    return MakeFaulty(
        automation::As<Scripting::FileSystemObject>(scripting->Create("Scripting.FileSystemObject")), faults);
  });

  classes.Register("MSXML2.DOMDocument", [xml = RealDocuments(), faults = faults] {
    return MakeFaulty(automation::As<MSXML2::DOMDocument>(xml->Create("MSXML2.DOMDocument")), faults);
  });

  directory = RegisterSurroundings(classes, fileHandling, archives);

  ConfigurationState& configuration = *test.configuration;
  configuration.rootPath = configuration.installDir = home.string();
  configuration.connectionStrings = {{{"Orvane", "Orvane"}, orvane.ConnectionString()},
                                     {{"VnServer", "ECatalog"}, catalogue.ConnectionString()}};
  configuration.values = {{{"MEMBERSHIP", "MemScriptUser"}, "cn=orvane"},
                          {{"MEMBERSHIP", "MemScriptCode"}, "secret"},
                          {{"MEMBERSHIP", "LDAPRoot"}, ""},
                          {{"COMMONPARAMETERS", "DEFAULTLANGUAGE"}, "1033"}};

  orvane.MakeSuiteTables();
  catalogue.MakeSuiteTables("-ecatalog.sql");
  SetParameter("DataFileRelativePath", "Data");
  SetParameter("ArchiveAfter", "1");
  SetParameter("Webfarm Implemented", "False");
  ExecuteCatalogue("insert into PRODUCTCATEGORY (CATEGORYID, CATEGORYNAME) values (3, 'Printers')");
  ExecuteCatalogue("insert into PRODUCT (PRODUCTID, PRODUCTDESCRIPTION) values (40, 'Laser 40')");
  ExecuteCatalogue("insert into FAQCATEGORY (FAQCATEGORYID, FAQCATEGORYDESCRIPTION) values (5, 'Paper jam')");
}

void ArchiveSuite::Execute(const std::string& sql) {
  orvane.Run(sql);
}
void ArchiveSuite::ExecuteCatalogue(const std::string& sql) {
  catalogue.Run(sql);
}

std::vector<std::string> ArchiveSuite::Rows(const std::string& sql) {
  const auto connection = automation::As<ADODB::Connection>(databases->Create("ADODB.Connection"));
  connection->Open(orvane.ConnectionString(), "", "", ADODB::kOptionsUnspecified);
  const auto records = automation::As<ADODB::Recordset>(databases->Create("ADODB.Recordset"));
  records->Open(ADODB::SqlFragment(sql), connection, ADODB::CursorType::ForwardOnly,
                ADODB::LockType::ReadOnly, ADODB::kOptionsUnspecified);
  std::vector<std::string> rows;
  for (; !records->Eof(); records->MoveNext()) {
    std::string row;
    for (std::size_t i = 0; i < records->Fields().Count(); ++i) {
      const automation::Variant& value = records->Value(i);
      row += (i == 0 ? "" : "|") + (value.IsNull() ? "NULL" : automation::ToText(value));
    }
    rows.push_back(row);
  }
  records->Close();
  connection->Close();
  return rows;
}

void ArchiveSuite::SetParameter(const std::string& name, const std::string& value) {
  Execute("delete from PARAMETERS where PARAM_NAME = '" + name + "'");
  Execute("insert into PARAMETERS (PARAM_NAME, PARAM_VALUE) values ('" + name + "', '" + value + "')");
}

void ArchiveSuite::AddRequest(int id, const std::string& originator, const std::string& ended) {
  Execute("insert into QUESTIONHISTORY (Q_ID, Q_STATUS, Q_ORIGINATOR, PROSPECT, ENDSTATUSTIME) values (" +
          std::to_string(id) + ", 185, '" + originator + "', 0, '" + ended + "')");
}

void ArchiveSuite::AddProspectRequest(int id, const std::string& emailID, const std::string& ended) {
  Execute(
      "insert into QUESTIONHISTORY (Q_ID, Q_STATUS, Q_ORIGINATOR, PROSPECT, EMAILID, ENDSTATUSTIME) values "
      "(" +
      std::to_string(id) + ", 185, 'zz-prospect', 1, '" + emailID + "', '" + ended + "')");
}

void ArchiveSuite::AddTransaction(int requestId, const std::string& name) {
  std::string quoted;
  for (const char c : name) quoted += c == '\'' ? "''" : std::string(1, c);
  Execute("insert into TRANSACTIONS (Q_ID, T_NAME) values (" + std::to_string(requestId) + ", '" + quoted +
          "')");
}

void ArchiveSuite::Run() {
  OrvaneProcess::Archive().Run();
}

void ArchiveSuite::RunAsAnotherHost(unsigned seed) const {
  TestRuntime other;
  *other.configuration = *test.configuration;
  ClassTable& classes = other.runtime.classes;
  ADODB::RegisterClasses(classes, TestProviders());
  classes.Register("Scripting.FileSystemObject",
                   [scripting = RealFiles()] { return scripting->Create("Scripting.FileSystemObject"); });
  // Runs as short as these would hardly ever meet between a file's loading and its saving.
  auto pauses = std::make_shared<FileFaults>();
  pauses->onSave = pauses->onLoad = [random = std::minstd_rand(seed)](const std::string&) mutable {
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 4000));
  };
  classes.Register("MSXML2.DOMDocument", [xml = RealDocuments(), pauses] {
    return MakeFaulty(automation::As<MSXML2::DOMDocument>(xml->Create("MSXML2.DOMDocument")), pauses);
  });
  RegisterSurroundings(classes, std::make_shared<FileHandlingState>(), archives);
  OrvaneProcess::Archive().Run();
}

std::string ArchiveSuite::RunLog() const {
  const automation::DateTimeParts today = test.now.Parts();
  const std::string name = "OrvArchiveSvc_log_" + std::to_string(today.year) + "_" +
                           std::to_string(today.month) + "_" + std::to_string(today.day) + ".txt";
  return TemporaryFolder::Read(home.parent_path() / "OrvLog" / name);
}

std::vector<std::string> ArchiveSuite::LogMessages() const {
  const std::string afterTimestamp = "  : ";
  std::vector<std::string> messages;
  std::istringstream lines(RunLog());
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::size_t start = line.find(afterTimestamp);
    if (start != std::string::npos) messages.push_back(line.substr(start + afterTimestamp.size()));
  }
  return messages;
}

std::string ArchiveSuite::ArchivePath(const std::string& name) const {
  return home.string() + "\\Data\\Archives\\" + name;
}

std::string ArchiveSuite::Archive(const std::string& name) const {
  return std::filesystem::exists(archives / name) ? TemporaryFolder::Read(archives / name) : std::string();
}

MSXML2::DOMDocumentPtr ArchiveSuite::Document(const std::string& name) const {
  auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
  if (!document->load(ArchivePath(name))) ADD_FAILURE() << name << ": " << document->parseErrorReason();
  return document;
}

std::vector<std::string> ArchiveSuite::Texts(const std::string& name, const std::string& expression) const {
  std::vector<std::string> texts;
  if (!std::filesystem::exists(archives / name)) {
    ADD_FAILURE() << name << " does not exist";
    return texts;
  }
  const MSXML2::NodeListPtr nodes = Document(name)->selectNodes(expression);
  for (std::size_t i = 0; i < nodes->length(); ++i) texts.push_back(nodes->item(i)->text());
  return texts;
}

}  // namespace orvane_test
