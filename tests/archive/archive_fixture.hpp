// A suite in a temporary folder for the archive job's tests: real databases, real files, real XML; the
// directory and the file-handling component are fakes that remember what they were asked.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "jobs/archive/archive.hpp"
#include "platform/msxml2/dom_document.hpp"
#include "tests/doubles/fake_directory.hpp"
#include "tests/doubles/fake_file_handling.hpp"
#include "tests/doubles/faulty_files.hpp"
#include "tests/doubles/watched_adodb.hpp"
#include "tests/support/archive_files.hpp"
#include "tests/support/sqlite_database.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {

struct ArchiveSuite {
  ArchiveSuite();

  TemporaryFolder folder;
  std::filesystem::path home;
  std::filesystem::path archives;  // home/Data/Archives
  TestRuntime test;
  std::shared_ptr<Directory> directory;
  std::shared_ptr<FileHandlingState> fileHandling = std::make_shared<FileHandlingState>();
  std::shared_ptr<FileFaults> faults = std::make_shared<FileFaults>();

  SqliteDatabase orvane;
  SqliteDatabase catalogue;
  std::shared_ptr<automation::ClassTable> databases;  // ADO past the journal
  std::shared_ptr<AdodbJournal> journal;

  // SQL on the suite's database, or the catalogue.
  void Execute(const std::string& sql);
  void ExecuteCatalogue(const std::string& sql);
  // Rows as text, columns joined by "|", null as "NULL".
  std::vector<std::string> Rows(const std::string& sql);

  void SetParameter(const std::string& name, const std::string& value);
  // A closed request of a registered customer; `ended` as 'YYYY-MM-DD HH:MM:SS'.
  void AddRequest(int id, const std::string& originator, const std::string& ended = "2004-01-01 00:00:00");
  void AddProspectRequest(int id, const std::string& emailID,
                          const std::string& ended = "2004-01-01 00:00:00");
  void AddTransaction(int requestId, const std::string& name);

  // Files that a test damages or makes up; every other archive file must be one by the schemas in the end.
  std::set<std::string> undescribed;

  void Run();  // a fresh object's Run, as the service host does it

  // The same in the calling thread with a runtime of its own, on the same databases and files, as a host
  // without any lock would do it. It pauses by the seed's chance before it loads or saves a document.
  void RunAsAnotherHost(unsigned seed) const;

  // Lines of the day's run log without rulers and timestamps; the raw bytes.
  std::vector<std::string> LogMessages() const;
  std::string RunLog() const;

  std::string ArchivePath(const std::string& name) const;  // as the log spells it
  std::string Archive(const std::string& name) const;      // the file's content; "" when there is none
  MSXML2::DOMDocumentPtr Document(const std::string& name) const;
  // Text of the nodes that an XPath expression selects in an archive file.
  std::vector<std::string> Texts(const std::string& name, const std::string& expression) const;
};

class ArchiveTest : public ::testing::Test {
 protected:
  void TearDown() override { ExpectArchiveFiles(suite.archives, suite.undescribed); }

  ArchiveSuite suite;
};

}  // namespace orvane_test
