#include "tests/e2e/clean_up_suite.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace orvane_test {

namespace fs = std::filesystem;

CleanUpSuite::CleanUpSuite() {
  database.Execute(
      "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50) PRIMARY KEY, PARAM_VALUE VARCHAR(250));"
      "CREATE TABLE PREVIEW (PREVIEWID INTEGER PRIMARY KEY, TEXT VARCHAR(50));"
      "CREATE TABLE QUESTIONS (Q_ID INTEGER PRIMARY KEY, Q_STATUS INTEGER, Q_DATE DATETIME, Q_TEXT TEXT);"
      "CREATE TABLE DATAFILES (ID1 INTEGER, FILENAME VARCHAR(255), FILETYPE INTEGER, LASTUPLOAD DATETIME, "
      "PRIMARY KEY (ID1, FILETYPE, FILENAME));"
      "CREATE TABLE CHATSESSIONS (SESSIONID VARCHAR(255) PRIMARY KEY);");
  SetParameter("DataFileRelativePath", "Data");
  SetParameter("KeepTemporaryFiles", "24");
}

void CleanUpSuite::SetParameter(const std::string& name, const std::string& value) {
  database.Execute("INSERT OR REPLACE INTO PARAMETERS VALUES ('" + name + "', '" + value + "')");
}

void CleanUpSuite::AddFile(const std::string& name, int hoursAgo) const {
  const fs::path file = suite.Folder().Write("home/Data/" + name, "x");
  fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(hoursAgo));
}

bool CleanUpSuite::Exists(const std::string& name) const {
  return fs::exists(fs::symlink_status(suite.Home() / "Data" / name));
}

std::vector<std::string> CleanUpSuite::Files() const {
  std::vector<std::string> files;
  const fs::path root = suite.Home() / "Data";
  if (!fs::exists(root)) return files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    if (!entry.is_directory()) files.push_back(entry.path().lexically_relative(root).string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

Outcome CleanUpSuite::Run() const {
  return RunHost({"run", "--home", suite.Home().string(), "OrvaneProcess.CleanUp"});
}

std::string CleanUpSuite::FinishedRun() {
  const std::string ruler(53, '*');
  return ruler + "\r\nOrvane NTService Log \r\n" + ruler +
         "\r\nClean Up - NTService Started at : <time>\r\n NTService Stopped at : <time>\r\n" + ruler +
         "\r\n";
}

std::string ObjectRequiredEntry(const std::string& source) {
  return "0 | OrvaneProcess | " + source +
         " caught: Object required (424). Additional information: Object required";
}

}  // namespace orvane_test
