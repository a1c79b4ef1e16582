#include "tests/cleanup/clean_up_fixture.hpp"

#include <algorithm>

#include "components/registration/register_jobs.hpp"

namespace orvane_test {
namespace {

constexpr std::string_view kDataRoot = "/suite/home/Data/";

std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? "''" : std::string(1, c);
  return quoted + "'";
}

}  // namespace

CleanUpTest::CleanUpTest() {
  OrvaneProcess::RegisterJobs(environment_.runtime.classes);
  RegisterFakeFileHandling(environment_.runtime.classes, farm_);
  disk_->AddFolder("/suite/home/Data");
  // Made by hand, not by the product: only the columns that the job uses are known to be there.
  for (const char* table :
       {"CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(255), PARAM_VALUE VARCHAR(255))",
        "CREATE TABLE PREVIEW (PREVIEWID INTEGER PRIMARY KEY, PREVIEWDATE DATETIME)",
        "CREATE TABLE QUESTIONS (Q_ID INTEGER PRIMARY KEY, Q_STATUS INTEGER, Q_DATE DATETIME)",
        "CREATE TABLE DATAFILES (ID1 INTEGER, FILENAME VARCHAR(255), FILETYPE INTEGER, LASTUPLOAD DATETIME, "
        "PRIMARY KEY (ID1, FILETYPE, FILENAME))",
        "CREATE TABLE CHATSESSIONS (SESSIONID VARCHAR(255) PRIMARY KEY)"}) {
    environment_.database.Run(table);
  }
  SetParameter("DataFileRelativePath", "Data");
  SetParameter("KeepTemporaryFiles", "24");
  SetParameter("FTPPath", "ftp://farm");
}

void CleanUpTest::SetParameter(std::string_view name, std::string_view value) {
  RemoveParameter(name);
  environment_.database.Run("INSERT INTO PARAMETERS VALUES (" + Quoted(name) + ", " + Quoted(value) + ")");
}

void CleanUpTest::RemoveParameter(std::string_view name) {
  environment_.database.Run("DELETE FROM PARAMETERS WHERE PARAM_NAME = " + Quoted(name));
}

void CleanUpTest::Run() {
  automation::CreateObject<OrvaneProcess::Job>(OrvaneProcess::kCleanUpProgId)->Run();
}

void CleanUpTest::RunWithAges() {
  OrvaneProcess::CleanUp(OrvaneProcess::ItemTimeText).Run();
}

void CleanUpTest::AddFile(std::string_view name, int minutesAgo) {
  disk_->AddFile(std::string(kDataRoot) + std::string(name), "x",
                 automation::AddMinutes(environment_.now, -minutesAgo));
}

void CleanUpTest::AddFolder(std::string_view name) {
  disk_->AddFolder(std::string(kDataRoot) + std::string(name));
}

bool CleanUpTest::Exists(std::string_view name) const {
  return disk_->Exists(std::string(kDataRoot) + std::string(name));
}

std::vector<std::string> CleanUpTest::Data() const {
  std::vector<std::string> names = disk_->PathsUnder("/suite/home/Data");
  for (std::string& name : names) {
    std::replace(name.begin(), name.end(), '\\', '/');
    name.erase(0, kDataRoot.size());
  }
  return names;
}

void CleanUpTest::AddQuestion(int id, int status, std::string_view date) {
  environment_.database.Run("INSERT INTO QUESTIONS VALUES (" + std::to_string(id) + ", " +
                            std::to_string(status) + ", " + Quoted(date) + ")");
}

void CleanUpTest::AddDataFile(int id, std::string_view name, int type, std::string_view upload) {
  environment_.database.Run("INSERT INTO DATAFILES VALUES (" + std::to_string(id) + ", " + Quoted(name) +
                            ", " + std::to_string(type) + ", " + Quoted(upload) + ")");
}

void CleanUpTest::AddSession(std::string_view id) {
  environment_.database.Run("INSERT INTO CHATSESSIONS VALUES (" + Quoted(id) + ")");
}

std::vector<std::string> CleanUpTest::Questions() {
  return environment_.database.Rows("SELECT Q_ID FROM QUESTIONS ORDER BY Q_ID");
}

std::vector<std::string> CleanUpTest::DataFiles() {
  return environment_.database.Rows(
      "SELECT ID1 || ':' || FILETYPE || ':' || FILENAME FROM DATAFILES ORDER BY ID1, FILETYPE, FILENAME");
}

std::vector<std::string> CleanUpTest::Messages() const {
  std::vector<std::string> messages;
  for (const LogEntry& entry : *environment_.log) messages.push_back(entry.message);
  return messages;
}

}  // namespace orvane_test
