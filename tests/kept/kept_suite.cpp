#include "tests/kept/kept_suite.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <regex>

#include "components/interfaces/job.hpp"
#include "host/init/databases.hpp"
#include "host/init/suite_files.hpp"
#include "jobs/archive/archive.hpp"
#include "platform/locale/icu_locale.hpp"
#include "suite/composition/composition.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

void ReplaceAll(std::string& text, const std::string& what, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
}

// The moment of sending, this machine, and the name that was drawn for the mail and parts its pieces.
std::string MaskedMail(std::string mail) {
  static const std::regex kHead("^Date: [^\r]*\r\nMessage-ID: <([0-9a-f]+)@([^>]*)>\r\n");
  std::smatch head;
  if (!std::regex_search(mail, head, kHead)) return mail;
  const std::string drawn = head[1];
  mail = "Date: <date>\r\nMessage-ID: <drawn@host>\r\n" + head.suffix().str();
  ReplaceAll(mail, drawn, "drawn");
  return mail;
}

std::vector<fs::path> FilesIn(const fs::path& folder) {
  std::vector<fs::path> files;
  if (!fs::exists(folder)) return files;
  for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

automation::DateTime Moment(const std::string& text) {
  automation::DateTimeParts parts;
  if (std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d", &parts.year, &parts.month, &parts.day, &parts.hour,
                  &parts.minute, &parts.second) != 6) {
    throw std::runtime_error("no moment: " + text);
  }
  return automation::DateTime::FromParts(parts);
}

KeptSuite::KeptSuite(const std::string& locale) {
  orvane_.MakeSuiteTables();
  catalogue_.MakeSuiteTables("-ecatalog.sql");
  orvane::host::MakeSuiteFiles(home_, orvane_.ConnectionString(), catalogue_.ConnectionString());
  orvane::RegisterSuite(runtime_, home_, Vantrel::SiteFile::Read(home_.SiteConfiguration()));
  runtime_.locale = automation::MakeLocale({.name = locale, .codePage = "windows-1252"});

  const automation::RuntimeScope scope(runtime_);
  orvane::host::FillSuite(orvane::host::OpenDatabase(orvane_.ConnectionString()));
  orvane::host::FillCatalogue(orvane::host::OpenDatabase(catalogue_.ConnectionString()));
}

void KeptSuite::SetParameter(const std::string& name, const std::string& value) {
  Change("DELETE FROM PARAMETERS WHERE PARAM_NAME = '" + name + "'");
  Add("PARAMETERS", {{"PARAM_NAME", name}, {"PARAM_VALUE", value}});
}

void KeptSuite::Add(const std::string& table, const Columns& columns) {
  const automation::RuntimeScope scope(runtime_);
  std::vector<std::string> names;
  std::vector<automation::Variant> values;
  for (const auto& [name, value] : columns) {
    names.push_back(name);
    values.push_back(value);
  }
  demo::Table(orvane::host::OpenDatabase(orvane_.ConnectionString()), table, names).Add(values);
}

void KeptSuite::AddToCatalogue(const std::string& table, const Columns& columns) {
  const automation::RuntimeScope scope(runtime_);
  std::vector<std::string> names;
  std::vector<automation::Variant> values;
  for (const auto& [name, value] : columns) {
    names.push_back(name);
    values.push_back(value);
  }
  demo::Table(orvane::host::OpenDatabase(catalogue_.ConnectionString()), table, names).Add(values);
}

void KeptSuite::Change(const std::string& statement) {
  orvane_.Run(statement);
}

void KeptSuite::AddPeople(const std::string& ldif) {
  std::ofstream(home_.Directory(), std::ios::binary | std::ios::app) << ldif;
}

void KeptSuite::AddFile(const std::string& path, std::string_view content, const std::string& day) {
  const fs::path file = folder_.Write(fs::path("home/Data") / path, content);
  const std::time_t moment = Moment(day + " 12:00:00").UnixMicroseconds() / 1'000'000;
  for (const fs::path& aged : {file, file.parent_path()}) {
    const timespec times[2] = {{moment, 0}, {moment, 0}};
    if (utimensat(AT_FDCWD, aged.c_str(), times, 0) != 0) throw std::runtime_error("utimensat");
  }
}

void KeptSuite::Run(const std::string& progId, const std::string& moment, const Midnight& midnight) {
  Enter(moment, midnight, [&progId] { automation::CreateObject<OrvaneProcess::Job>(progId)->Run(); });
}

void KeptSuite::ArchiveAs(const std::string& calledFrom, const std::string& comment,
                          const std::string& moment) {
  Enter(moment, {}, [&] { OrvaneProcess::Archive().archiveQuestions(calledFrom, comment); });
}

void KeptSuite::Enter(const std::string& moment, const Midnight& midnight,
                      const std::function<void()>& work) {
  runtime_.clock = [this, before = Moment(moment), midnight, passed = false]() mutable {
    if (midnight.later.empty()) return before;
    const fs::path log = home_.Logs() / midnight.log;
    passed =
        passed || (fs::exists(log) && TemporaryFolder::Read(log).find(midnight.last) != std::string::npos);
    return passed ? Moment(midnight.later) : before;
  };
  const automation::RuntimeScope scope(runtime_);
  work();
}

std::string KeptSuite::Masked(std::string text) const {
  ReplaceAll(text, home_.Path().string(), "<home>");
  return text;
}

std::vector<std::string> KeptSuite::Mails() const {
  std::vector<std::string> mails;
  // Their names sort by the moment of sending.
  for (const fs::path& file : FilesIn(home_.Path() / "mail" / "pickup")) {
    mails.push_back(MaskedMail(TemporaryFolder::Read(file)));
    fs::remove(file);
  }
  return mails;
}

std::string KeptSuite::Rows() {
  std::string shown;
  for (const char* query : {"SELECT Q_ID, Q_ORIGINATOR FROM QUESTIONHISTORY ORDER BY Q_ID",
                            "SELECT Q_ID, Q_STATUS FROM QUESTIONS ORDER BY Q_ID",
                            "SELECT T_ID, Q_ID, T_NAME, T_STATUS, T_DATE FROM TRANSACTIONS ORDER BY T_ID",
                            "SELECT Q_ID, T1_DATE, T2_DATE, R_STATUS FROM REMINDER ORDER BY Q_ID, R_STATUS",
                            "SELECT EMAILID FROM PROSPECT ORDER BY EMAILID",
                            "SELECT ID1, FILENAME FROM DATAFILES ORDER BY ID1, FILETYPE, FILENAME",
                            "SELECT SESSIONID FROM CHATSESSIONS ORDER BY SESSIONID"}) {
    shown += std::string(query) + "\n";
    for (const std::string& row : orvane_.Rows(query)) shown += "  " + row + "\n";
  }
  return shown;
}

KeptFiles KeptSuite::Take() {
  KeptFiles files;
  for (const fs::path& file : FilesIn(home_.Path() / "Data" / "Archives")) {
    files["archives/" + file.filename().string()] = Masked(TemporaryFolder::Read(file));
  }
  for (const fs::path& file : FilesIn(home_.Logs())) {
    if (file == home_.ErrorLog()) continue;
    files["logs/" + file.filename().string()] = Masked(TemporaryFolder::Read(file));
  }
  int number = 0;
  for (const std::string& mail : Mails()) {
    char name[24];
    std::snprintf(name, sizeof name, "mails/%02d.eml", ++number);
    files[name] = mail;
  }
  files["rows.txt"] = Rows();
  return files;
}

void KeptSuite::PutInPlace(const KeptFiles& files) {
  const fs::path archives = home_.Path() / "Data" / "Archives";
  for (const fs::path& folder : {archives, home_.Logs()}) {
    for (const fs::path& file : FilesIn(folder)) fs::remove(file);
  }
  for (const auto& [name, content] : files) {
    std::string text = content;
    ReplaceAll(text, "<home>", home_.Path().string());
    const fs::path bare = fs::path(name).filename();
    if (name.starts_with("archives/")) orvane::host::WriteFile(archives / bare, text);
    if (name.starts_with("logs/")) orvane::host::WriteFile(home_.Logs() / bare, text);
  }
}

}  // namespace orvane_test
