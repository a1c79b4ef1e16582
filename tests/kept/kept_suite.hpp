// A whole suite, put together as the host does it, that is run night after night at moments of the test's
// choosing, and what its jobs leave behind, file by file.
//
// A night's files are archive files, run logs and mails, and a list of the rows that are left. What no two
// runs have in common is masked: the installation's folder as "<home>", and in a mail its date, its own name
// and this machine's.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "demo/table.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/composition/suite_home.hpp"
#include "tests/support/sqlite_database.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {

// "archives/NAME", "logs/NAME", "mails/NN.eml", "rows.txt" to content.
using KeptFiles = std::map<std::string, std::string>;

// "2004-07-26 09:05:03".
automation::DateTime Moment(const std::string& text);

class KeptSuite {
 public:
  using Columns = std::map<std::string, automation::Variant>;

  explicit KeptSuite(const std::string& locale);

  void SetParameter(const std::string& name, const std::string& value);
  void Add(const std::string& table, const Columns& columns);
  void AddToCatalogue(const std::string& table, const Columns& columns);
  void Change(const std::string& statement);
  void AddPeople(const std::string& ldif);
  // A file below the data folder, last written and read on `day` ("2004-07-01").
  void AddFile(const std::string& path, std::string_view content, const std::string& day);

  // The job's Run as a service host calls it, at `moment`. Once the log of that day holds `last`, it is
  // `later`; so a run passes midnight at the same place each time, however often it looks at the clock.
  struct Midnight {
    std::string log;  // file name
    std::string last;
    std::string later;
  };
  void Run(const std::string& progId, const std::string& moment, const Midnight& midnight = {});
  // The archive job as a process of the suite calls it.
  void ArchiveAs(const std::string& calledFrom, const std::string& comment, const std::string& moment);

  // All files as they are now; mails are taken away.
  KeptFiles Take();
  // Puts `files` in the place of the archive files and logs that are there.
  void PutInPlace(const KeptFiles& files);

 private:
  void Enter(const std::string& moment, const Midnight& midnight, const std::function<void()>& work);
  std::string Masked(std::string text) const;
  std::vector<std::string> Mails() const;
  std::string Rows();

  TemporaryFolder folder_;
  const orvane::SuiteHome home_{folder_.Path() / "home"};
  SqliteDatabase orvane_{folder_.Path() / "orvane.sqlite"};
  SqliteDatabase catalogue_{folder_.Path() / "ecatalog.sqlite"};
  automation::Runtime runtime_;
};

}  // namespace orvane_test
