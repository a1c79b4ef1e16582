// A whole suite around the solve job: a real database of any engine, real files, style sheets and suite
// components. Only the clock, the directory and, where a test does not ask for the real one, the mail
// transport are the test's own.
//
// The clock stands at 26 July 2004, 09:05:03; Conclusion_Time is 72 hours, Reminder_Time 24, the ERP is of
// generation 3. All texts are those of the demo suite.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/adodb/session/provider.hpp"
#include "platform/automation/class_table.hpp"
#include "platform/base/created_files.hpp"
#include "platform/cdo/registration.hpp"
#include "tests/doubles/fake_directory.hpp"
#include "tests/doubles/suite_doubles.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {

// A database with the suite's tables, empty. Each engine's test program makes its own.
class SuiteTables {
 public:
  virtual ~SuiteTables() = default;
  virtual std::shared_ptr<ADODB::engine::Provider> Provider() = 0;
  virtual std::string ConnectionString() const = 0;
};

struct SuiteTablesMaker {
  std::string name;  // part of the tests' names
  std::function<std::unique_ptr<SuiteTables>()> make;
  friend void PrintTo(const SuiteTablesMaker& maker, std::ostream* out) { *out << maker.name; }
};

class WholeSuite {
 public:
  using Texts = std::vector<std::string>;

  // A question with its reminder row. Dates as "2004-07-26 09:05:03"; empty is null.
  struct Case {
    int id;
    std::string t1;
    std::string t2;
    std::map<std::string, automation::Variant> columns = {};  // of QUESTIONS, over the usual ones
    int reminderStatus = 150;
  };

  explicit WholeSuite(std::unique_ptr<SuiteTables> tables);
  ~WholeSuite();

  void Add(const std::vector<Case>& cases);
  void AddReminderWithoutQuestion(int id, const std::string& t1, const std::string& t2);
  void AddProspect(const std::string& email, int pendingQuestions);
  // Changes rows beside the job.
  void Execute(const std::string& statement);
  // Mails leave through the real transport from now on, instead of being kept in `doubles_`.
  void UseTransport(const CDO::Settings& settings);
  void Run() { job_.Run(); }
  // After the database was down: rows are read and changed over a new connection.
  void Reconnect();

  // The rows of a statement, columns joined by "|", dates as above, nulls as NULL.
  Texts Rows(const std::string& sql);
  Texts Log() const;
  Texts Lines(const std::string& file) const;  // of a file below HOME; none when it is not there
  Texts PagesLeft() const;                     // names of the files in the page folder
  std::filesystem::path Home() const { return folder_.Path() / "home"; }

  TemporaryFolder folder_;
  std::unique_ptr<SuiteTables> tables_;
  TestRuntime environment_;
  std::shared_ptr<SuiteDoubles> doubles_ = std::make_shared<SuiteDoubles>();
  std::shared_ptr<Directory> directory_;
  std::function<void()> beforeMail_;  // called when the job begins to hand a mail over: its page is made

 private:
  void FillSettings();
  void FillTexts();
  void FillDirectory();

  std::shared_ptr<base::CreatedFiles> created_ = std::make_shared<base::CreatedFiles>();
  automation::ClassTable mail_;  // the mail component of the moment
  ADODB::ConnectionPtr connection_;
  OrvaneProcess::SolveOnNoResponseJob job_;
};

}  // namespace orvane_test
