// What others change while a customer is being archived: rows between the writing of the files and the purge,
// and the files themselves. Nothing is deleted that stands in no file, and nobody's entries are overwritten.
#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <utility>

#include "tests/archive/archive_fixture.hpp"

namespace orvane_test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// jdoe was archived before and has a request with two transactions to archive.
class ArchiveChangesTest : public ArchiveTest {
 protected:
  ArchiveChangesTest() {
    suite.AddRequest(1, "jdoe");
    suite.AddTransaction(1, "old");
    suite.Run();
    questionsBefore = suite.Archive(kQuestions);
    transactionsBefore = suite.Archive(kTransactions);
    suite.AddRequest(2, "jdoe");
    suite.AddTransaction(2, "first");
    suite.AddTransaction(2, "second");
  }

  // Both files are written, nothing is deleted yet, and the database is not locked.
  void BeforeThePurge(std::function<void()> change) {
    suite.journal->before = [change = std::move(change), done = false](std::string_view step) mutable {
      if (step == "Connection.BeginTrans" && !std::exchange(done, true)) change();
    };
  }
  // `trigger` is a piece of SQL that the embedded engine, which lets nobody else write in the meantime, runs
  // after the deletion of each transaction; on a server another connection runs `sql`.
  void BetweenTheDeletions(const std::string& sql) {
    if (std::getenv("ORVANE_TEST_ENGINE") == nullptr) {
      suite.Execute(
          "create trigger meanwhile after delete on TRANSACTIONS when old.T_NAME = 'second' begin " + sql +
          "; end");
      return;
    }
    suite.journal->beforeStatement = [this, sql](const std::string& statement) {
      if (statement.starts_with("Delete from QUESTIONHISTORY")) suite.Execute(sql);
    };
  }
  void BeforeTheFirstSaveOf(const std::string& name, std::function<void()> change) {
    suite.faults->onSave = [path = suite.ArchivePath(name), change = std::move(change),
                            done = false](const std::string& saved) mutable {
      if (saved == path && !std::exchange(done, true)) change();
    };
  }
  void WriteFile(const std::string& name, const std::string& content) {
    suite.folder.Write("suite/home/Data/Archives/" + name, content);
    suite.undescribed.insert(name);
  }

  void ExpectUndone() {
    EXPECT_EQ(suite.Archive(kQuestions), questionsBefore);
    EXPECT_EQ(suite.Archive(kTransactions), transactionsBefore);
    EXPECT_THAT(suite.LogMessages(), Contains("Changes to XML files undone" + suite.ArchivePath(kQuestions) +
                                              suite.ArchivePath(kTransactions) + " undone"));
  }
  void ExpectArchivedByTheNextRun() {
    suite.Run();
    EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
    EXPECT_THAT(suite.Rows("select Q_ID from TRANSACTIONS"), IsEmpty());
  }
  std::vector<std::string> Requests() { return suite.Rows("select Q_ID from QUESTIONHISTORY order by Q_ID"); }
  std::vector<std::string> Transactions() {
    return suite.Rows("select T_NAME from TRANSACTIONS order by T_NAME");
  }
  std::vector<std::string> ErrorLog() const {
    std::vector<std::string> messages;
    for (const LogEntry& entry : *suite.test.log) messages.push_back(entry.message);
    return messages;
  }

  static constexpr const char* kQuestions = "NoBP_jdoe_SR.xml";
  static constexpr const char* kTransactions = "NoBP_jdoe_trans.xml";
  std::string questionsBefore;
  std::string transactionsBefore;
};

TEST_F(ArchiveChangesTest, ARequestThatCameInTheWrittenOnesPlaceIsNotDeleted) {
  BeforeThePurge([this] {
    suite.Execute("delete from TRANSACTIONS");
    suite.Execute("delete from QUESTIONHISTORY");
    suite.AddRequest(9, "jdoe");
  });
  suite.Run();
  EXPECT_THAT(Requests(), ElementsAre("9"));
  EXPECT_THAT(suite.Texts(kQuestions, "//SR/@Q_ID"), ElementsAre("1", "2"))
      << "the written request is gone: the file has the only copy";
  EXPECT_THAT(suite.Texts(kTransactions, "//T_NAME"), ElementsAre("old", "first", "second"));
  EXPECT_THAT(ErrorLog(), ElementsAre(AllOf(HasSubstr("1 rows came in"), HasSubstr("the files are kept"))));
  ExpectArchivedByTheNextRun();
  EXPECT_THAT(suite.Texts(kQuestions, "//SR/@Q_ID"), ElementsAre("1", "2", "9"));
}

TEST_F(ArchiveChangesTest, ATransactionThatCameInTheWrittenOnesPlaceIsNotDeleted) {
  BeforeThePurge([this] {
    suite.Execute("delete from TRANSACTIONS where T_NAME = 'second'");
    suite.AddTransaction(2, "swapped");
  });
  suite.Run();
  EXPECT_THAT(Requests(), ElementsAre("2"));
  EXPECT_THAT(Transactions(), ElementsAre("first", "swapped"));
  ExpectUndone();
  ExpectArchivedByTheNextRun();
  EXPECT_THAT(suite.Texts(kTransactions, "//T_NAME"), ElementsAre("old", "first", "swapped"));
}

TEST_F(ArchiveChangesTest, ARequestThatWasEditedAfterItWasWrittenIsNotDeleted) {
  BeforeThePurge([this] { suite.Execute("update QUESTIONHISTORY set Q_TEXT = 'edited' where Q_ID = 2"); });
  suite.Run();
  EXPECT_THAT(Requests(), ElementsAre("2"));
  EXPECT_THAT(Transactions(), ElementsAre("first", "second"));
  ExpectUndone();
  ExpectArchivedByTheNextRun();
  EXPECT_THAT(suite.Texts(kQuestions, "//SR[@Q_ID='2']/Q_TEXT"), ElementsAre("edited"));
}

TEST_F(ArchiveChangesTest, ATransactionThatWasEditedAfterItWasWrittenIsNotDeleted) {
  BeforeThePurge([this] { suite.Execute("update TRANSACTIONS set T_COMMENT = 'edited' where Q_ID = 2"); });
  suite.Run();
  EXPECT_THAT(Transactions(), ElementsAre("first", "second"));
  ExpectUndone();
  ExpectArchivedByTheNextRun();
  EXPECT_THAT(suite.Texts(kTransactions, "//SR[@Q_ID='2']//T_COMMENT"), ElementsAre("edited", "edited"));
}

TEST_F(ArchiveChangesTest, OneTransactionLessIsNoFailure) {
  BeforeThePurge([this] { suite.Execute("delete from TRANSACTIONS where T_NAME = 'second'"); });
  suite.Run();
  EXPECT_THAT(Requests(), IsEmpty());
  EXPECT_THAT(Transactions(), IsEmpty());
  EXPECT_THAT(suite.Texts(kTransactions, "//T_NAME"), ElementsAre("old", "first", "second"));
  EXPECT_THAT(suite.LogMessages(), Not(Contains(HasSubstr("undone"))));
}

TEST_F(ArchiveChangesTest, RowsOfTablesWithoutAPrimaryKeyAreToldApartByAllTheirColumns) {
  suite.Execute("create table QH2 as select * from QUESTIONHISTORY");
  suite.Execute("create table TR2 as select * from TRANSACTIONS");
  for (const char* sql :
       {"drop table TRANSACTIONS", "drop table QUESTIONHISTORY", "alter table QH2 rename to QUESTIONHISTORY",
        "alter table TR2 rename to TRANSACTIONS"}) {
    suite.Execute(sql);
  }
  BeforeThePurge(
      [this] { suite.Execute("update TRANSACTIONS set T_NAME = 'edited' where T_NAME = 'second'"); });
  suite.Run();
  EXPECT_THAT(Requests(), ElementsAre("2"));
  EXPECT_THAT(Transactions(), ElementsAre("edited", "first"));
  ExpectUndone();
  ExpectArchivedByTheNextRun();
}

// The request stays, and its transactions must not go without it.
TEST_F(ArchiveChangesTest, ARequestThatIsReopenedBetweenTheDeletionsKeepsItsTransactions) {
  BetweenTheDeletions("update QUESTIONHISTORY set ENDSTATUSTIME = null where Q_ID = 2");
  suite.Run();
  EXPECT_THAT(Requests(), ElementsAre("2"));
  EXPECT_THAT(Transactions(), ElementsAre("first", "second"));
  ExpectUndone();
  EXPECT_THAT(ErrorLog(),
              ElementsAre(HasSubstr("transactions of requests that are not to be deleted any more")));
}

TEST_F(ArchiveChangesTest, TheReasonOfAnUndoIsTold) {
  BeforeThePurge([this] { suite.AddTransaction(2, "late"); });
  suite.Run();
  ExpectUndone();
  EXPECT_THAT(ErrorLog(),
              ElementsAre(HasSubstr("OrvaneProcess.Archive.archiveOriginator caught: 1 rows came in or "
                                    "were changed after the files were written")));
}

// --- Files ---

TEST_F(ArchiveChangesTest, AQuestionsFileThatAnotherHasChangedIsNotSavedOver) {
  BeforeTheFirstSaveOf(kQuestions,
                       [this] { WriteFile(kQuestions, "<QuestionsArchive>theirs</QuestionsArchive>"); });
  suite.Run();
  EXPECT_EQ(suite.Archive(kQuestions), "<QuestionsArchive>theirs</QuestionsArchive>");
  EXPECT_EQ(suite.Archive(kTransactions), transactionsBefore);
  EXPECT_THAT(Requests(), ElementsAre("2"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Editing of Archive file " + suite.ArchivePath(kQuestions) + " failed1"));
  EXPECT_THAT(ErrorLog(), ElementsAre(HasSubstr("OrvaneProcess.Archive.archiveOriginator caught: " +
                                                suite.ArchivePath(kQuestions) +
                                                " has been changed by another program.")));
}

TEST_F(ArchiveChangesTest, ATransactionsFileThatAnotherHasChangedIsNotSavedOver) {
  BeforeTheFirstSaveOf(kTransactions, [this] { WriteFile(kTransactions, "<TransactionsArchive/>"); });
  suite.Run();
  EXPECT_EQ(suite.Archive(kTransactions), "<TransactionsArchive/>");
  EXPECT_EQ(suite.Archive(kQuestions), questionsBefore);
  EXPECT_THAT(Requests(), ElementsAre("2"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Editing of Archive file " + suite.ArchivePath(kTransactions) + " failed2"));
  EXPECT_THAT(ErrorLog(), ElementsAre(HasSubstr("has been changed by another program.")));
}

TEST_F(ArchiveChangesTest, AnUndoLeavesAFileThatAnotherHasChangedAndSaysSoInTheErrorLog) {
  BeforeThePurge([this] {
    suite.AddTransaction(2, "late");
    WriteFile(kQuestions, "<QuestionsArchive>theirs</QuestionsArchive>");
  });
  suite.Run();
  EXPECT_EQ(suite.Archive(kQuestions), "<QuestionsArchive>theirs</QuestionsArchive>");
  EXPECT_EQ(suite.Archive(kTransactions), transactionsBefore);
  EXPECT_THAT(Requests(), ElementsAre("2"));
  EXPECT_THAT(suite.LogMessages(), Contains(HasSubstr("Changes to XML files undone")));
  EXPECT_THAT(ErrorLog(), ElementsAre(HasSubstr("1 rows came in or were changed"),
                                      AllOf(HasSubstr("has been changed by another program."),
                                            HasSubstr(suite.ArchivePath(kQuestions) +
                                                      " could not be given back its former content"))));
}

TEST_F(ArchiveChangesTest, AnUndoThatFailsIsTold) {
  suite.journal->beforeStatement = [this](const std::string& sql) {
    if (sql.find("Delete from QUESTIONHISTORY") == std::string::npos) return;
    suite.faults->onSave = [](const std::string&) { throw automation::Error(61, "test", "Disk full"); };
    throw automation::Error(-2147467259, "test", "table is locked");
  };
  suite.Run();
  EXPECT_THAT(suite.LogMessages(), Contains(HasSubstr("Changes to XML files undone")));
  EXPECT_THAT(ErrorLog(), ElementsAre(HasSubstr("table is locked"),
                                      HasSubstr("Disk full(61). Additional information: " +
                                                suite.ArchivePath(kQuestions)),
                                      HasSubstr(suite.ArchivePath(kTransactions))));
}

TEST_F(ArchiveChangesTest, AFileThatSomebodyKeepsLockedIsTold) {
  BeforeTheFirstSaveOf(kQuestions,
                       [] { throw automation::Error(automation::ErrorNumber::PermissionDenied, "test"); });
  suite.Run();
  EXPECT_THAT(suite.LogMessages(),
              Contains("Editing of Archive file " + suite.ArchivePath(kQuestions) + " failed1"));
  EXPECT_THAT(ErrorLog(), ElementsAre(HasSubstr("caught: Permission denied(70)")));
}

// What is edited and what an undo would put back must be the same content.
TEST_F(ArchiveChangesTest, AFileThatAnotherChangesBetweenTheTwoLoadsIsLeftAlone) {
  for (const char* name : {kQuestions, kTransactions}) {
    const std::string before = suite.Archive(name);
    const std::string theirs = before + "<!-- theirs -->";
    int loads = 0;
    suite.faults->onLoad = [&](const std::string& path) {
      if (path == suite.ArchivePath(name) && ++loads == 2) WriteFile(name, theirs);
    };
    suite.test.log->clear();
    suite.Run();
    EXPECT_EQ(suite.Archive(name), theirs);
    EXPECT_THAT(Requests(), ElementsAre("2"));
    EXPECT_THAT(suite.LogMessages(), Contains(HasSubstr("could not be created/loaded")));
    EXPECT_THAT(ErrorLog(), ElementsAre(HasSubstr("has been changed by another program.")));
    WriteFile(name, before);
  }
}

TEST_F(ArchiveChangesTest, AFileThatAnotherMakesMeanwhileIsKept) {
  suite.AddRequest(3, "zoe");
  suite.fileHandling->onFileExists = [this](const std::string& name) {
    if (name == "NoBP_zoe_SR.xml") WriteFile(name, "<QuestionsArchive>theirs</QuestionsArchive>");
  };
  suite.Run();
  EXPECT_EQ(suite.Archive("NoBP_zoe_SR.xml"), "<QuestionsArchive>theirs</QuestionsArchive>");
  EXPECT_THAT(Requests(), ElementsAre("3")) << "jdoe's are archived";
  EXPECT_THAT(suite.LogMessages(), Contains("Questions XML file " + suite.ArchivePath("NoBP_zoe_SR.xml") +
                                            " could not be created/loaded"));
  EXPECT_THAT(ErrorLog(), ElementsAre(HasSubstr("File already exists")));
}

// --- Damage ---

TEST_F(ArchiveChangesTest, AnEmptyOrCutOffFileIsLeftAsItIs) {
  for (const std::string& damaged :
       {std::string(), std::string("<Quest"), std::string("<QuestionsArchive></Qu"),
        questionsBefore.substr(0, questionsBefore.size() / 2)}) {
    WriteFile(kQuestions, damaged);
    suite.Run();
    EXPECT_EQ(suite.Archive(kQuestions), damaged);
    EXPECT_EQ(suite.Archive(kTransactions), transactionsBefore);
    EXPECT_THAT(Requests(), ElementsAre("2"));
  }
  EXPECT_THAT(suite.LogMessages(),
              Contains("Questions XML file " + suite.ArchivePath(kQuestions) + " could not be created/loaded")
                  .Times(4));

  suite.folder.Write(std::string("suite/home/Data/Archives/") + kQuestions, questionsBefore);
  WriteFile(kTransactions, "");
  suite.Run();
  EXPECT_EQ(suite.Archive(kQuestions), questionsBefore);
  EXPECT_EQ(suite.Archive(kTransactions), "");
  EXPECT_THAT(Requests(), ElementsAre("2"));
  EXPECT_THAT(suite.LogMessages(), Contains("Transactions XML file " + suite.ArchivePath(kTransactions) +
                                            " could not be created/loaded "));
}

TEST_F(ArchiveChangesTest, ABareRootElementThatAKilledRunLeftIsCompleted) {
  suite.AddRequest(3, "zoe");
  WriteFile("NoBP_zoe_SR.xml", "<QuestionsArchive></QuestionsArchive>\r\n");
  suite.Run();
  EXPECT_THAT(suite.Texts("NoBP_zoe_SR.xml", "/QuestionsArchive/SRs/SR/@Q_ID"), ElementsAre("3"));
  EXPECT_THAT(Requests(), IsEmpty());
}

}  // namespace
}  // namespace orvane_test
