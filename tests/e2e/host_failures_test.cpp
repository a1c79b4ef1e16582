// What an operator meets when a suite is not as it should be.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "run/lock/file_lock.hpp"
#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/support/archive_files.hpp"

namespace {

using orvane_test::Database;
using orvane_test::DateText;
using orvane_test::HandMadeSuite;
using orvane_test::Outcome;
using orvane_test::RunHost;
using orvane_test::RunningHost;
using Strings = std::vector<std::string>;

constexpr const char* kJob = "OrvaneProcess.DormantUserExpiry";

class HostFailuresTest : public testing::Test {
 protected:
  void MakeDatabase() {
    Database database(suite_.DatabaseFile());
    database.Execute(
        "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(50));"
        "CREATE TABLE PROSPECT (NAME TEXT PRIMARY KEY, LASTVISITEDTIME DATETIME, PENDINGQUESTIONS INTEGER);"
        "INSERT INTO PARAMETERS VALUES ('MAXDORMANCYTIME', '30');"
        "INSERT INTO PROSPECT VALUES ('away', '" +
        DateText(-400L * 86'400) + "', 0)");
  }
  Strings Left() { return Database(suite_.DatabaseFile()).Rows("SELECT NAME FROM PROSPECT"); }
  Outcome Run() { return RunHost({"run", "--home", suite_.Home().string(), kJob}); }
  std::string SiteFile() const { return (suite_.Home() / "config/siteConfiguration.xml").string(); }

  HandMadeSuite suite_;
};

TEST_F(HostFailuresTest, AnUnknownJobIsAUsageErrorWithThePlatformsText) {
  const Outcome outcome = RunHost({"run", "--home", suite_.Home().string(), kJob, "OrvaneProcess.Dispatch"});
  EXPECT_EQ(outcome.exitCode, 64);
  EXPECT_EQ(outcome.err,
            "orvane-host: OrvaneProcess.Dispatch: ActiveX component can't create object (429); \"orvane-host "
            "list\" "
            "shows the jobs\n");
  EXPECT_EQ(outcome.out, "");
  EXPECT_FALSE(std::filesystem::exists(suite_.Logs()));  // nothing ran, not even the job that is known
}

TEST_F(HostFailuresTest, AWrongCommandLineIsAUsageError) {
  const Outcome outcome = RunHost({"run", kJob});
  EXPECT_EQ(outcome.exitCode, 64);
  EXPECT_EQ(outcome.err,
            "orvane-host: no installation directory: give --home HOME or set ORVANE_HOME\n"
            "Try \"orvane-host --help\".\n");
}

TEST_F(HostFailuresTest, TheHomeMayComeFromTheEnvironment) {
  MakeDatabase();
  EXPECT_EQ(RunHost({"run", "dormantuserexpiry"}, {{"ORVANE_HOME", suite_.Home().string()}}).exitCode, 0);
  EXPECT_EQ(Left(), Strings{});
}

TEST_F(HostFailuresTest, AMissingConfigurationIsNamed) {
  std::filesystem::remove(SiteFile());
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_EQ(outcome.err,
            "orvane-host: " + SiteFile() +
                ": cannot be read: No such file or directory; expected the site configuration of a "
                "suite\n");
}

TEST_F(HostFailuresTest, AMalformedConfigurationIsShownByFileAndLine) {
  suite_.Folder().Write("home/config/siteConfiguration.xml",
                        "<siteConfiguration>\n<product name=\"Orvane\">\n</section>\n</siteConfiguration>\n");
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_EQ(outcome.err,
            "orvane-host: " + SiteFile() +
                ":3: Opening and ending tag mismatch: product line 2 and section; expected well-formed "
                "XML\n");
  EXPECT_FALSE(std::filesystem::exists(suite_.Logs()));
}

TEST_F(HostFailuresTest, AMisspeltElementIsShownByFileAndLine) {
  suite_.Folder().Write("home/config/siteConfiguration.xml",
                        "<siteConfiguration>\n  <produkt name=\"Orvane\"/>\n</siteConfiguration>\n");
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_EQ(outcome.err,
            "orvane-host: " + SiteFile() + ":2: found <produkt>; expected <product> or <section>\n");
}

TEST_F(HostFailuresTest, AConfigurationWithoutTheSuitesDatabaseIsRefused) {
  suite_.Folder().Write("home/config/siteConfiguration.xml", "<siteConfiguration/>\n");
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_EQ(outcome.err,
            "orvane-host: " + SiteFile() + ": product \"Orvane\" has no connection \"Orvane\"\n");
}

TEST_F(HostFailuresTest, ALogFolderThatCannotBeMadeEndsTheJobBeforeItsWork) {
  MakeDatabase();
  suite_.Folder().Write("OrvLog", "a file in the place of the folder");
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 70);
  EXPECT_NE(
      outcome.err.find("orvane-host: OrvaneProcess.DormantUserExpiry: ended by: File already exists (58)\n"),
      std::string::npos)
      << outcome.err;
  EXPECT_EQ(Left(), Strings{"away"});
}

TEST_F(HostFailuresTest, ARunThatEndsWithoutAnEntrySaysWhatEndedIt) {
  MakeDatabase();
  Database(suite_.DatabaseFile()).Execute("UPDATE PARAMETERS SET PARAM_VALUE = 'soon'");
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 70);
  EXPECT_EQ(outcome.err, "orvane-host: OrvaneProcess.DormantUserExpiry: ended by: Type mismatch (13)\n");
  EXPECT_FALSE(std::filesystem::exists(suite_.Logs() / "Vantrel.log"));
}

TEST_F(HostFailuresTest, AMissingDatabaseIsReportedAndNotMade) {
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 70);
  EXPECT_FALSE(std::filesystem::exists(suite_.DatabaseFile()));
  ASSERT_EQ(suite_.ErrorLog().size(), 1U);
  EXPECT_NE(suite_.ErrorLog()[0].find("unable to open database file"), std::string::npos)
      << suite_.ErrorLog()[0];
  EXPECT_NE(outcome.err.find("warning: OrvaneProcess.DormantUserExpiry: "), std::string::npos) << outcome.err;
}

TEST_F(HostFailuresTest, ADamagedDatabaseIsLeftAlone) {
  const std::string damaged(8192, 'x');
  suite_.Folder().Write("home/db/orvane.sqlite", damaged);
  EXPECT_EQ(Run().exitCode, 70);
  EXPECT_EQ(suite_.ErrorLog(), Strings{"0 | SQLite | METHOD: \u240D\u240AOrvServiceRequestOrvaneUtilities."
                                       "GetOrvaneConnection caught: file is not a database(-2147467259)."});
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(suite_.DatabaseFile()), damaged);
}

TEST_F(HostFailuresTest, AReadOnlyDatabaseKeepsItsRows) {
  MakeDatabase();
  suite_.GiveAway();
  std::filesystem::permissions(suite_.DatabaseFile(), std::filesystem::perms(0444));
  std::filesystem::permissions(suite_.DatabaseFile().parent_path(), std::filesystem::perms(0555));
  const Outcome outcome = orvane_test::RunHostUnprivileged({"run", "--home", suite_.Home().string(), kJob});
  EXPECT_EQ(outcome.exitCode, 70);
  std::filesystem::permissions(suite_.DatabaseFile().parent_path(), std::filesystem::perms(0755));
  EXPECT_EQ(Left(), Strings{"away"});
}

TEST_F(HostFailuresTest, ALockedDatabaseEndsTheJobWithoutItsStopLine) {
  MakeDatabase();
  Database holder(suite_.DatabaseFile());
  holder.Execute("PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE");
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 70);
  EXPECT_EQ(suite_.ErrorLog(), Strings{"0 | SQLite | METHOD: \u240D\u240AOrvServiceRequestOrvaneUtilities."
                                       "GetOrvaneConnection caught: database is locked(-2147467259)."});
  holder.Execute("ROLLBACK");
  EXPECT_EQ(holder.Rows("SELECT NAME FROM PROSPECT"), Strings{"away"});
}

TEST_F(HostFailuresTest, OneUnfinishedJobDoesNotKeepTheNextFromRunning) {
  MakeDatabase();
  Database(suite_.DatabaseFile()).Execute("DELETE FROM PARAMETERS");
  const Outcome outcome = RunHost({"run", "--home", suite_.Home().string(), "DormantUserExpiry", "CleanUp"});
  EXPECT_EQ(outcome.exitCode, 70);
  EXPECT_NE(outcome.out.find("OrvaneProcess.CleanUp: finished"), std::string::npos) << outcome.out;
}

TEST_F(HostFailuresTest, OnlyTheFirstWarningsArePrintedAndTheRestIsCounted) {
  Database database(suite_.DatabaseFile());
  std::string script =
      "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(50));"
      "INSERT INTO PARAMETERS VALUES ('DataFileRelativePath', 'Data'), ('ArchiveAfter', '1');"
      "CREATE TABLE QUESTIONHISTORY (Q_ID INTEGER PRIMARY KEY, Q_STATUS INTEGER, Q_ORIGINATOR VARCHAR(50),"
      " PROSPECT BIT, EMAILID VARCHAR(50), ENDSTATUSTIME DATETIME);"
      "CREATE TABLE TRANSACTIONS (T_ID INTEGER PRIMARY KEY, Q_ID INTEGER);";
  for (int id = 1; id <= 23; ++id) {
    script += "INSERT INTO QUESTIONHISTORY VALUES (" + std::to_string(id) + ", 175, 'nobody" +
              std::to_string(id) + "', 0, NULL, '2004-01-01 00:00:00');";
  }
  database.Execute(script);
  Database(suite_.CatalogueFile())
      .Execute(
          "CREATE TABLE FAQPARAMETER (PARAMNAME VARCHAR(50), PARAMVALUE VARCHAR(50));"
          "CREATE TABLE FAQCATEGORY (FAQCATEGORYID INTEGER, FAQCATEGORYDESCRIPTION VARCHAR(50));"
          "CREATE TABLE PRODUCTCATEGORY (CATEGORYID INTEGER, CATEGORYNAME VARCHAR(50));"
          "CREATE TABLE PRODUCT (PRODUCTID INTEGER, PRODUCTDESCRIPTION VARCHAR(50));");
  suite_.Folder().Write("home/config/directory.ldif", "");  // nobody is in it
  const Outcome outcome = RunHost({"run", "--home", suite_.Home().string(), "Archive"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 21) << outcome.err;
  EXPECT_NE(outcome.err.find("warning: OrvaneProcess.Archive: 3 more; the error log is " +
                             (suite_.Logs() / "Vantrel.log").string() + "\n"),
            std::string::npos)
      << outcome.err;
  EXPECT_EQ(suite_.ErrorLog().size(), 23U);
  orvane_test::ExpectArchiveFiles(suite_.Home() / "Data" / "Archives");
}

TEST_F(HostFailuresTest, FailureLinesOfARunLogArePrintedAndCount) {
  Database(suite_.DatabaseFile())
      .Execute(
          "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(50));"
          "INSERT INTO PARAMETERS VALUES ('DataFileRelativePath', 'Data'), ('ArchiveAfter', 'soon');");
  Database(suite_.CatalogueFile())
      .Execute("CREATE TABLE FAQPARAMETER (PARAMNAME VARCHAR(50), PARAMVALUE VARCHAR(50));");
  suite_.Folder().Write("home/config/directory.ldif", "");
  const Outcome outcome = RunHost({"run", "--strict", "--home", suite_.Home().string(), "Archive"});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_NE(outcome.err.find("warning: OrvaneProcess.Archive: Archiving process failed\n"), std::string::npos)
      << outcome.err;
}

TEST_F(HostFailuresTest, AnAttachmentWithoutItsFolderIsNamedWithWhatToDo) {
  Database(suite_.DatabaseFile())
      .Execute(
          "CREATE TABLE PARAMETERS (PARAM_NAME VARCHAR(50), PARAM_VALUE VARCHAR(50));"
          "INSERT INTO PARAMETERS VALUES ('DataFileRelativePath', 'Data'), ('KeepTemporaryFiles', '1');"
          "CREATE TABLE DATAFILES (ID1 INTEGER, FILENAME VARCHAR(50), FILETYPE INTEGER, LASTUPLOAD DATETIME);"
          "INSERT INTO DATAFILES VALUES (7, 'a.txt', 1, '2004-01-01 00:00:00')");
  const auto run = [this] { return RunHost({"run", "--home", suite_.Home().string(), "CleanUp"}); };
  const std::string folder = (suite_.Home() / "Data/SRATTACHMENTS/7Q").string();
  const Outcome stuck = run();
  EXPECT_EQ(stuck.exitCode, 0);
  EXPECT_NE(stuck.err.find("warning: OrvaneProcess.CleanUp: the folder " + folder +
                           " is not there, and every run stops at it: make it again, empty, and the next run "
                           "removes it together with its row in DATAFILES; on a web farm, where the rows "
                           "stay, delete that row by hand\n"),
            std::string::npos)
      << stuck.err;

  std::filesystem::create_directories(folder);
  EXPECT_EQ(run().err.find("is not there"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(folder));
  EXPECT_EQ(Database(suite_.DatabaseFile()).Rows("SELECT count(*) FROM DATAFILES"), Strings{"0"});
}

TEST_F(HostFailuresTest, StatusShowsFinishedAndUnfinishedRuns) {
  MakeDatabase();
  ASSERT_EQ(Run().exitCode, 0);
  Database(suite_.DatabaseFile()).Execute("DELETE FROM PARAMETERS");
  ASSERT_EQ(Run().exitCode, 70);
  const Outcome outcome = RunHost({"status", "--home", suite_.Home().string()});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(orvane_test::WithoutTimes(outcome.out),
            "OrvaneProcess.Archive\n  no run logged\n"
            "OrvaneProcess.CleanUp\n  no run logged\n"
            "OrvaneProcess.DormantUserExpiry\n"
            "  started <time>  stopped <time>\n"
            "  started <time>  unfinished\n"
            "OrvaneProcess.SolveOnNoResponse\n  no run logged\n");
}

TEST_F(HostFailuresTest, StatusTellsARunFromOneThatWasCutOff) {
  MakeDatabase();
  Database(suite_.DatabaseFile()).Execute("DELETE FROM PARAMETERS");
  ASSERT_EQ(Run().exitCode, 70);
  const auto shown = [this] {
    return orvane_test::WithoutTimes(RunHost({"status", "--home", suite_.Home().string()}).out);
  };
  const auto hold = [this](const char* job) {
    return orvane_lock::FileLock::TryTake(suite_.Home() / ".lock",
                                          {.process = 42, .host = "alpha", .job = job, .since = "now"});
  };
  auto held = hold("OrvaneProcess.DormantUserExpiry");
  EXPECT_NE(shown().find("  started <time>  running, process 42 on alpha\n"), std::string::npos);
  held.reset();
  EXPECT_NE(shown().find("  started <time>  unfinished\n"), std::string::npos);
  held = hold("OrvaneProcess.Archive");
  EXPECT_NE(shown().find("  started <time>  unfinished\n"), std::string::npos);
}

TEST_F(HostFailuresTest, StatusOfAMissingFolderIsAMatterOfConfiguration) {
  const Outcome outcome = RunHost({"status", "--home", (suite_.Home() / "none").string()});
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_EQ(outcome.err, "orvane-host: " + (suite_.Home() / "none").string() + ": no such directory\n");
}

TEST_F(HostFailuresTest, StatusShowsTheLastFiveRunsOfADay) {
  MakeDatabase();
  for (int run = 0; run < 6; ++run) ASSERT_EQ(Run().exitCode, 0);
  Database(suite_.DatabaseFile()).Execute("DELETE FROM PARAMETERS");
  ASSERT_EQ(Run().exitCode, 70);
  const std::string shown =
      orvane_test::WithoutTimes(RunHost({"status", "--home", suite_.Home().string()}).out);
  std::string expected = "OrvaneProcess.DormantUserExpiry\n";
  for (int run = 0; run < 4; ++run) expected += "  started <time>  stopped <time>\n";
  expected += "  started <time>  unfinished\nOrvaneProcess.SolveOnNoResponse\n";
  EXPECT_NE(shown.find(expected), std::string::npos) << shown;
}

TEST_F(HostFailuresTest, AStrictCallFailsForAnEarlierJobAsWell) {
  MakeDatabase();
  Database database(suite_.DatabaseFile());
  database.Execute(
      "INSERT INTO PARAMETERS VALUES ('DataFileRelativePath', 'Data')");  // and no tables to purge
  const auto run = [this](const Strings& more) {
    Strings words{"run", "--home", suite_.Home().string(), "CleanUp", "DormantUserExpiry"};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  };
  EXPECT_EQ(run({}).exitCode, 0);
  const Outcome strict = run({"--strict"});
  EXPECT_EQ(strict.exitCode, 1) << strict.err;
  EXPECT_NE(strict.err.find("warning: OrvaneProcess.CleanUp: "), std::string::npos);
  EXPECT_EQ(strict.err.find("warning: OrvaneProcess.DormantUserExpiry: "), std::string::npos);
}

TEST_F(HostFailuresTest, AReaderThatHangsUpDoesNotEndTheRun) {
  MakeDatabase();
  RunningHost host({"run", "--home", suite_.Home().string(), kJob});
  host.HangUp();
  EXPECT_EQ(host.Wait().exitCode, 0);
  EXPECT_EQ(Left(), Strings{});
}

// A shell's redirections behind a call of the host; its exit code.
int Redirected(const std::string& words, const std::string& redirections) {
  return WEXITSTATUS(std::system(("exec '" ORVANE_HOST_BINARY "' " + words + " " + redirections).c_str()));
}

TEST_F(HostFailuresTest, AFullDiskUnderTheOutputIsTold) {
  MakeDatabase();
  const orvane_test::TemporaryFolder folder;
  const std::string errors = folder.Path() / "errors";
  const std::string full = ">/dev/full 2>'" + errors + "'";
  const std::string told = "orvane-host: standard output could not be written to its end\n";
  EXPECT_EQ(Redirected("list", full), 70);
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(errors), told);
  const std::string run = "run --home '" + suite_.Home().string() + "' " + kJob;
  EXPECT_EQ(Redirected(run, full), 0) << "the run took place";
  EXPECT_TRUE(orvane_test::TemporaryFolder::Read(errors).ends_with(told));
}

TEST_F(HostFailuresTest, AReaderWhoHasSeenEnoughIsNoFailure) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  EXPECT_EQ(Redirected("list", ">&" + std::to_string(ends[1])), 0);
  close(ends[1]);
}

TEST_F(HostFailuresTest, WhatIsPrintedIntoClosedStreamsReachesNoFileOfTheSuite) {
  MakeDatabase();
  const std::string run = "run --home '" + suite_.Home().string() + "' " + kJob;
  EXPECT_EQ(Redirected(run, "<&- >&- 2>&-"), 0);
  EXPECT_EQ(Left(), Strings{});
  int journals = 0;
  for (const auto& entry : std::filesystem::directory_iterator(suite_.Home() / "journal")) {
    ++journals;
    std::istringstream lines(orvane_test::TemporaryFolder::Read(entry.path()));
    for (std::string line; std::getline(lines, line);) EXPECT_EQ(line.substr(0, 5), "{\"v\":") << line;
  }
  EXPECT_EQ(journals, 1);
  const std::string holder = orvane_test::TemporaryFolder::Read(suite_.Home() / ".lock");
  EXPECT_NE(holder.find(std::string("\t") + kJob + "\t"), std::string::npos) << holder;
}

TEST_F(HostFailuresTest, APipeInThePlaceOfTheConfigurationIsRefused) {
  std::filesystem::remove(SiteFile());
  ASSERT_EQ(mkfifo(SiteFile().c_str(), 0600), 0);
  const Outcome outcome = Run();
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_EQ(outcome.err, "orvane-host: " + SiteFile() +
                             ": is no ordinary file; expected the site configuration of a suite\n");
}

TEST_F(HostFailuresTest, ListShowsTheProgIds) {
  const Outcome outcome = RunHost({"list"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out,
            "OrvaneProcess.Archive\nOrvaneProcess.CleanUp\nOrvaneProcess.DormantUserExpiry\n"
            "OrvaneProcess.SolveOnNoResponse\n");
}

}  // namespace
