// The purge and the undo: whatever stage fails, rows and files stay in step, and the next customer is tried.
#include <gmock/gmock.h>

#include <functional>
#include <utility>

#include "tests/archive/archive_fixture.hpp"

namespace orvane_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

bool Mentions(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

[[noreturn]] void Fail(const std::string& why) {
  throw automation::Error(-2147467259, "test", why);
}

// A commit that was sent and not answered.
[[noreturn]] void LoseTheAnswer() {
  throw automation::Error(-2147467259, "test", "server closed the connection")
      .WithOutcome(automation::Outcome::Unknown);
}

// jdoe was archived before and has a request and a transaction to archive; zoe comes after and must not
// suffer.
class ArchivePurgeTest : public ArchiveTest {
 protected:
  ArchivePurgeTest() {
    suite.AddRequest(1, "jdoe");
    suite.AddTransaction(1, "old");
    suite.Run();
    questionsBefore = suite.Archive("NoBP_jdoe_SR.xml");
    transactionsBefore = suite.Archive("NoBP_jdoe_trans.xml");
    suite.AddRequest(2, "jdoe");
    suite.AddTransaction(2, "new");
    suite.AddRequest(3, "zoe");
    suite.AddTransaction(3, "zoe's");
    logBefore = suite.LogMessages().size();
  }

  std::vector<std::string> NewMessages() const {
    const std::vector<std::string> all = suite.LogMessages();
    return {all.begin() + static_cast<std::ptrdiff_t>(logBefore), all.end()};
  }

  void ExpectJdoesRowsKeptAndZoeArchived() {
    EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("2"));
    EXPECT_THAT(suite.Rows("select Q_ID from TRANSACTIONS"), ElementsAre("2"));
    EXPECT_THAT(suite.Texts("NoBP_zoe_SR.xml", "//SR/@Q_ID"), ElementsAre("3"));
    EXPECT_THAT(suite.Texts("NoBP_zoe_trans.xml", "//Transaction/T_NAME"), ElementsAre("zoe's"));
    EXPECT_THAT(NewMessages(), Contains("Archive Files " + suite.ArchivePath("NoBP_zoe_SR.xml") + " and " +
                                        suite.ArchivePath("NoBP_zoe_trans.xml") + " edited"));
  }

  void FailCommits(int count) {
    suite.journal->before = [count](std::string_view step) mutable {
      if (step == "Connection.CommitTrans" && count-- > 0) Fail("server closed the connection");
    };
  }

  // jdoe's commit is made, but its answer is lost; `then` happens right after it.
  void LoseTheFirstAnswer(std::function<void()> then) {
    suite.journal->after = [then = std::move(then), lost = false](std::string_view step) mutable {
      if (step != "Connection.CommitTrans" || std::exchange(lost, true)) return;
      then();
      LoseTheAnswer();
    };
  }
  // jdoe's commit does not arrive, and the engine rolls back by itself; `then` happens right after it.
  void LoseTheFirstCommit(std::function<void()> then) {
    suite.journal->before = [lost = false](std::string_view step) mutable {
      if (step == "Connection.CommitTrans" && !std::exchange(lost, true)) LoseTheAnswer();
    };
    suite.journal->after = [then = std::move(then), lost = false](std::string_view step) mutable {
      if (step != "Connection.RollbackTrans" || std::exchange(lost, true)) return;
      then();
      Fail("server closed the connection");
    };
  }
  void FailNextConnections(int count) {
    suite.journal->before = [count](std::string_view step) mutable {
      if (step == "Connection.Open" && count-- > 0) Fail("server is not there");
    };
  }
  void ExpectJdoesRowsGoneAndTheFilesKept() {
    EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
    EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
    EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//Transaction/T_NAME"), ElementsAre("old", "new"));
    EXPECT_THAT(NewMessages(),
                Contains("Archive Files " + questionsPath + " and " + transactionsPath + " edited"));
    EXPECT_THAT(NewMessages(), Not(Contains(::testing::HasSubstr("undone"))));
  }

  const std::string questionsPath = suite.ArchivePath("NoBP_jdoe_SR.xml");
  const std::string transactionsPath = suite.ArchivePath("NoBP_jdoe_trans.xml");
  std::string questionsBefore;
  std::string transactionsBefore;
  std::size_t logBefore = 0;
};

TEST_F(ArchivePurgeTest, DeletesTransactionsAndRequestsAndSaysWhichFilesWereEdited) {
  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
  EXPECT_THAT(suite.Rows("select Q_ID from TRANSACTIONS"), IsEmpty());
  EXPECT_THAT(NewMessages(),
              Contains("Archive Files " + questionsPath + " and " + transactionsPath + " edited"));
}

TEST_F(ArchivePurgeTest, StatementsReadAsOperatorsKnowThem) {
  std::vector<std::string> statements;
  suite.journal->beforeStatement = [&](const std::string& sql) { statements.push_back(sql); };

  suite.Run();

  const std::string condition = "dateadd(d,1,ENDSTATUSTIME)<'7-26-2004 09:05:03' and Q_ORIGINATOR='jdoe'";
  EXPECT_THAT(
      statements,
      Contains("select distinct (Q_ORIGINATOR + isnull(EMAILID,'')),Q_ORIGINATOR,EMAILID,PROSPECT from "
               "QUESTIONHISTORY where dateadd(d,1,ENDSTATUSTIME)<{ts '2004-07-26 09:05:03'}"));
  EXPECT_THAT(statements, Contains("select * from QUESTIONHISTORY where " + condition));
  EXPECT_THAT(statements,
              Contains("select * from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where " +
                       condition + ")"));
  EXPECT_THAT(statements,
              Contains("Delete from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where " +
                       condition + ")"));
  EXPECT_THAT(statements, Contains("Delete from QUESTIONHISTORY where " + condition));
  EXPECT_THAT(statements, Contains("select PARAM_VALUE from PARAMETERS where PARAM_NAME='ArchiveAfter'"));
  EXPECT_THAT(statements,
              Contains("select PARAM_VALUE from PARAMETERS where PARAM_NAME='DataFileRelativePath'"));
  EXPECT_THAT(statements, Contains("SELECT PARAM_NAME, PARAM_VALUE FROM PARAMETERS WHERE PARAM_NAME IN "
                                   "('Webfarm Implemented', 'FTPPath')"));
  EXPECT_THAT(statements,
              Contains("select PARAMVALUE from FAQPARAMETER where PARAMNAME='ATTACHMENTSDIRECTORY'"));
  EXPECT_THAT(statements, Contains("Select * from FAQCATEGORY"));
  EXPECT_THAT(statements, Contains("Select CATEGORYID,CATEGORYNAME from PRODUCTCATEGORY"));
  EXPECT_THAT(statements, Contains("Select PRODUCTID,PRODUCTDESCRIPTION from PRODUCT"));
}

TEST_F(ArchivePurgeTest, AProspectsStatementsGoByItsAddress) {
  suite.AddProspectRequest(9, "ann@example.org");
  std::vector<std::string> statements;
  suite.journal->beforeStatement = [&](const std::string& sql) { statements.push_back(sql); };

  suite.Run();

  const std::string condition =
      "dateadd(d,1,ENDSTATUSTIME)<'7-26-2004 09:05:03' and EMAILID='ann@example.org'";
  EXPECT_THAT(statements, Contains("select * from QUESTIONHISTORY where " + condition));
  EXPECT_THAT(statements,
              Contains("select * from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where " +
                       condition + ")"));
  EXPECT_THAT(statements,
              Contains("Delete from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where " +
                       condition + ")"));
  EXPECT_THAT(statements, Contains("Delete from QUESTIONHISTORY where " + condition));
}

TEST_F(ArchivePurgeTest, LookupsAreLoadedTwiceARun) {
  int loads = 0;
  suite.journal->beforeStatement = [&](const std::string& sql) {
    loads += Mentions(sql, "from FAQCATEGORY") ? 1 : 0;
  };

  suite.Run();

  EXPECT_EQ(loads, 2);
}

TEST_F(ArchivePurgeTest, AQuestionsFileThatDoesNotLoadIsLeftAsItIs) {
  suite.folder.Write("suite/home/Data/Archives/NoBP_jdoe_SR.xml", "<QuestionsArchive><SRs>damaged by hand");
  suite.undescribed = {"NoBP_jdoe_SR.xml"};

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), "<QuestionsArchive><SRs>damaged by hand");
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
  EXPECT_THAT(NewMessages(),
              Contains("Questions XML file " + questionsPath + " could not be created/loaded"));
}

TEST_F(ArchivePurgeTest, AFileThatDoesNotLoadASecondTimeEndsItsStage) {
  for (const std::string& file : {questionsPath, transactionsPath}) {
    int loads = 0;
    suite.faults->onLoad = [&](const std::string& path) {
      if (path == file && ++loads == 2) {
        suite.folder.Write("suite/home/Data/Archives/" + path.substr(path.rfind('\\') + 1), "damaged");
      }
    };

    suite.Run();

    ExpectJdoesRowsKeptAndZoeArchived();
    EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), file == questionsPath ? "damaged" : questionsBefore);
    EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), file == questionsPath ? transactionsBefore : "damaged");
    suite.folder.Write("suite/home/Data/Archives/NoBP_jdoe_SR.xml", questionsBefore);
  }
  suite.undescribed = {"NoBP_jdoe_trans.xml"};
  EXPECT_THAT(NewMessages(),
              Contains("Questions XML file " + questionsPath + " could not be created/loaded"));
  EXPECT_THAT(NewMessages(),
              Contains("Transactions XML file " + transactionsPath + " could not be created/loaded "));
}

TEST_F(ArchivePurgeTest, AQuestionsFileThatCannotBeSavedDeletesNothing) {
  suite.faults->onSave = [this](const std::string& path) {
    if (path == questionsPath) Fail("disk full");
  };

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
  EXPECT_THAT(NewMessages(), Contains("Editing of Archive file " + questionsPath + " failed1"));
}

TEST_F(ArchivePurgeTest, ATransactionsFileThatDoesNotLoadRestoresTheQuestionsFile) {
  suite.folder.Write("suite/home/Data/Archives/NoBP_jdoe_trans.xml", "damaged");
  suite.undescribed = {"NoBP_jdoe_trans.xml"};

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_THAT(NewMessages(),
              Contains("Transactions XML file " + transactionsPath + " could not be created/loaded "))
      << "the blank at the end is part of the text";
}

TEST_F(ArchivePurgeTest, ATransactionsFileThatCannotBeSavedRestoresTheQuestionsFile) {
  suite.faults->onSave = [this](const std::string& path) {
    if (path == transactionsPath) Fail("disk full");
  };

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
  EXPECT_THAT(NewMessages(), Contains("Editing of Archive file " + transactionsPath + " failed2"));
}

TEST_F(ArchivePurgeTest, AFailedFirstDeleteUndoesBothFiles) {
  suite.journal->beforeStatement = [](const std::string& sql) {
    if (Mentions(sql, "Delete from TRANSACTIONS") && Mentions(sql, "jdoe")) Fail("table is locked");
  };

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
  EXPECT_THAT(NewMessages(),
              Contains("Changes to XML files undone" + questionsPath + transactionsPath + " undone"));
}

TEST_F(ArchivePurgeTest, AFailedSecondDeleteRollsTheFirstBack) {
  suite.journal->beforeStatement = [](const std::string& sql) {
    if (Mentions(sql, "Delete from QUESTIONHISTORY") && Mentions(sql, "jdoe")) Fail("table is locked");
  };

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
}

TEST_F(ArchivePurgeTest, AFailedCommitRestoresTheFilesWhenTheRowsAreStillThere) {
  FailCommits(1);

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY where Q_ORIGINATOR = 'jdoe'"), ElementsAre("2"));
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
}

// As on tables without transactions: what was deleted is gone, and the rollback gives nothing back.
TEST_F(ArchivePurgeTest, RowsThatARollbackDoesNotBringBackKeepTheFiles) {
  suite.AddTransaction(2, "newer");
  for (const char* gone :
       {"delete from TRANSACTIONS where T_NAME = 'newer'", "delete from QUESTIONHISTORY where Q_ID = 2"}) {
    suite.test.log->clear();
    suite.journal->beforeStatement = [](const std::string& sql) {
      if (Mentions(sql, "Delete from QUESTIONHISTORY") && Mentions(sql, "jdoe")) Fail("table is locked");
    };
    suite.journal->after = [this, gone](std::string_view step) {
      if (step == "Connection.RollbackTrans") suite.Execute(gone);
    };

    suite.Run();

    EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), Contains("2"));
    EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//Transaction/T_NAME"), Contains("newer"));
    EXPECT_THAT(NewMessages(), Not(Contains(::testing::HasSubstr("undone"))));
    ASSERT_EQ(suite.test.log->size(), 1U);
    EXPECT_THAT(suite.test.log->front().message,
                ::testing::AllOf(::testing::HasSubstr("table is locked"),
                                 ::testing::HasSubstr("the files are kept")));
    suite.AddTransaction(2, "newer");
  }
}

TEST_F(ArchivePurgeTest, RowsThatWentThoughTheirCommitNeverArrivedKeepTheFiles) {
  LoseTheFirstCommit([this] { suite.Execute("delete from TRANSACTIONS where Q_ID = 2"); });

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY where Q_ORIGINATOR = 'jdoe'"), ElementsAre("2"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//Transaction/T_NAME"), ElementsAre("old", "new"));
  EXPECT_THAT(NewMessages(), Not(Contains(::testing::HasSubstr("undone"))));
}

TEST_F(ArchivePurgeTest, ACommitThatWasMadeButNotAnsweredKeepsTheFiles) {
  LoseTheFirstAnswer([] {});

  suite.Run();

  ExpectJdoesRowsGoneAndTheFilesKept();
}

TEST_F(ArchivePurgeTest, ARowThatComesInBehindAnUnansweredCommitIsNotTakenForOneThatIsStillThere) {
  LoseTheFirstAnswer([this] { suite.AddRequest(9, "jdoe"); });

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("9"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//Transaction/T_NAME"), ElementsAre("old", "new"));
}

TEST_F(ArchivePurgeTest, WhatBecameOfACommitIsAskedAgainWhenTheFirstConnectionIsGoneToo) {
  LoseTheFirstAnswer([this] { FailNextConnections(1); });

  suite.Run();

  ExpectJdoesRowsGoneAndTheFilesKept();
}

TEST_F(ArchivePurgeTest, RowsThatAreStillThereAfterAFailedCommitGiveTheFilesTheirContentBack) {
  LoseTheFirstCommit([] {});

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
  EXPECT_THAT(NewMessages(),
              Contains("Changes to XML files undone" + questionsPath + transactionsPath + " undone"));
}

TEST_F(ArchivePurgeTest, WhetherRowsAreStillThereIsAskedAgainWhenTheFirstConnectionIsGoneToo) {
  LoseTheFirstCommit([this] { FailNextConnections(1); });

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
}

TEST_F(ArchivePurgeTest, WhenNobodyCanTellWhatBecameOfACommitTheFilesStay) {
  LoseTheFirstAnswer([this] { FailNextConnections(2); });

  suite.Run();

  ExpectJdoesRowsGoneAndTheFilesKept();
}

TEST_F(ArchivePurgeTest, AskingWhatBecameOfACommitLeavesNoConnectionOpen) {
  int opened = 0;
  int closed = 0;
  LoseTheFirstAnswer([&] {
    suite.journal->before = [&](std::string_view step) {
      opened += step == "Connection.Open" ? 1 : 0;
      closed += step == "Connection.Close" ? 1 : 0;
    };
  });

  suite.Run();

  EXPECT_GT(opened, 0);
  EXPECT_EQ(closed, opened + 1) << "the run's own connection was opened before";
}

TEST_F(ArchivePurgeTest, RowsThatWentMeanwhileLeaveTheEntriesAndTheLine) {
  suite.faults->onSave = [this](const std::string& path) {
    if (path == transactionsPath) {
      suite.faults->onSave = nullptr;
      suite.Execute("delete from TRANSACTIONS where Q_ID = 2");
      suite.Execute("delete from QUESTIONHISTORY where Q_ID = 2");
    }
  };

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
  EXPECT_THAT(NewMessages(),
              Contains("Archive Files " + questionsPath + " and " + transactionsPath + " edited"));
}

TEST_F(ArchivePurgeTest, ATransactionThatComesInAfterTheFilesWereWrittenIsNotDeletedUnwritten) {
  // The database is locked for the late writer once the purge has begun, so it comes in just before.
  bool late = false;
  suite.journal->before = [&](std::string_view step) {
    if (step == "Connection.BeginTrans" && !std::exchange(late, true)) suite.AddTransaction(2, "late");
  };

  suite.Run();

  EXPECT_THAT(suite.Rows("select T_NAME from TRANSACTIONS where Q_ID = 2"), ElementsAre("new", "late"));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY where Q_ORIGINATOR = 'jdoe'"), ElementsAre("2"));
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
  EXPECT_THAT(NewMessages(),
              Contains("Changes to XML files undone" + questionsPath + transactionsPath + " undone"));
}

TEST_F(ArchivePurgeTest, ALateRowOfTheNextCustomerIsNotCoveredByWhatTheOneBeforeHadWritten) {
  int purges = 0;
  suite.journal->before = [&](std::string_view step) {
    if (step == "Connection.BeginTrans" && ++purges == 2) suite.AddTransaction(3, "late");
  };

  suite.Run();

  EXPECT_EQ(purges, 2);
  EXPECT_THAT(suite.Rows("select T_NAME from TRANSACTIONS"), ElementsAre("zoe's", "late"));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("3"));
}

TEST_F(ArchivePurgeTest, ARequestThatComesInAfterTheFilesWereWrittenIsNotDeletedUnwritten) {
  bool late = false;
  suite.journal->before = [&](std::string_view step) {
    if (step == "Connection.BeginTrans" && !std::exchange(late, true)) suite.AddRequest(9, "jdoe");
  };

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY where Q_ORIGINATOR = 'jdoe' order by Q_ID"),
              ElementsAre("2", "9"));
  EXPECT_THAT(suite.Rows("select T_NAME from TRANSACTIONS where Q_ID = 2"), ElementsAre("new"));
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
}

TEST_F(ArchivePurgeTest, ANewCustomersEntryIsNumberedOneWhateverTheCustomerBeforeHad) {
  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//Archive/@ArchiveID"), ElementsAre("1", "2"));
  EXPECT_THAT(suite.Texts("NoBP_zoe_SR.xml", "//Archive/@ArchiveID"), ElementsAre("1"));
  EXPECT_THAT(suite.Texts("NoBP_zoe_trans.xml", "//@ArchiveID"), ElementsAre("1", "1"));
}

TEST_F(ArchivePurgeTest, ARequestsFileThatWasSavedButNotHandedOutStaysAsItWasSaved) {
  suite.fileHandling->failingMember = "StoreFile(" + questionsPath;

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
  EXPECT_THAT(NewMessages(), Contains("Editing of Archive file " + questionsPath + " failed1"));
}

TEST_F(ArchivePurgeTest, AnEmptyCatalogueTableEndsTheCustomersThatNeedIt) {
  suite.ExecuteCatalogue("delete from PRODUCTCATEGORY");
  suite.Execute("update QUESTIONHISTORY set Q_PRODUCTCAT = 3 where Q_ORIGINATOR = 'jdoe'");
  suite.Execute("update QUESTIONHISTORY set Q_PRODUCTCAT = 0 where Q_ORIGINATOR = 'zoe'");

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_THAT(NewMessages(), Contains("Editing of Archive file " + questionsPath + " failed1"));
}

TEST_F(ArchivePurgeTest, AFileHandlingComponentThatFailsEndsTheStageItServes) {
  suite.fileHandling->failingMember = "StoreFile(" + transactionsPath;

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_EQ(suite.Archive("NoBP_jdoe_SR.xml"), questionsBefore);
  EXPECT_THAT(suite.Texts("NoBP_jdoe_trans.xml", "//SR/@Q_ID"), ElementsAre("1", "2"))
      << "only the requests file is restored";
  EXPECT_THAT(NewMessages(), Contains("Editing of Archive file " + transactionsPath + " failed2"));
}

TEST_F(ArchivePurgeTest, OnAFarmTheOtherServersGetBackWhatAnUndoneRunHandedThem) {
  suite.SetParameter("Webfarm Implemented", "True");
  suite.fileHandling->calls.clear();
  suite.journal->beforeStatement = [](const std::string& sql) {
    if (Mentions(sql, "Delete from QUESTIONHISTORY") && Mentions(sql, "jdoe")) Fail("table is locked");
  };
  std::vector<std::pair<std::string, std::string>> handedOut;
  suite.fileHandling->onStore = [&](const std::string& path) {
    const std::string name = path.substr(path.rfind('\\') + 1);
    handedOut.emplace_back(name, suite.Archive(name));
  };

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  ASSERT_GE(handedOut.size(), 4U);
  EXPECT_EQ(handedOut[0].first, "NoBP_jdoe_SR.xml");
  EXPECT_THAT(handedOut[0].second, ::testing::HasSubstr("<SR Q_ID=\"2\"")) << "saved before it is handed out";
  EXPECT_EQ(handedOut[1].first, "NoBP_jdoe_trans.xml");
  EXPECT_THAT(handedOut[1].second, ::testing::HasSubstr("<SR Q_ID=\"2\""));
  EXPECT_EQ(handedOut[2], std::make_pair(std::string("NoBP_jdoe_SR.xml"), questionsBefore));
  EXPECT_EQ(handedOut[3], std::make_pair(std::string("NoBP_jdoe_trans.xml"), transactionsBefore));
}

TEST_F(ArchivePurgeTest, AFileThatCannotBeRestoredDoesNotKeepTheOtherFromIt) {
  suite.journal->beforeStatement = [this](const std::string& sql) {
    if (!Mentions(sql, "Delete from QUESTIONHISTORY") || !Mentions(sql, "jdoe")) return;
    suite.faults->onSave = [this](const std::string& path) {
      if (path == questionsPath) Fail("disk full");
    };
    Fail("table is locked");
  };

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
  EXPECT_EQ(suite.Archive("NoBP_jdoe_trans.xml"), transactionsBefore);
  EXPECT_THAT(NewMessages(),
              Contains("Changes to XML files undone" + questionsPath + transactionsPath + " undone"));
}

// Whatever stage fails, no file stays marked as being worked on: the next run would not fetch the newest
// copy.
TEST_F(ArchivePurgeTest, NoMarkOutlivesAFailedStage) {
  const std::vector<std::function<void()>> failures = {
      [this] {
        suite.faults->onLoad = [this](const std::string& path) {
          if (path == questionsPath) Fail("damaged");
        };
      },
      [this] {
        suite.faults->onSave = [this](const std::string& path) {
          if (path == questionsPath) Fail("disk full");
        };
      },
      [this] {
        suite.faults->onLoad = [this](const std::string& path) {
          if (path == transactionsPath) Fail("damaged");
        };
      },
      [this] {
        suite.faults->onSave = [this](const std::string& path) {
          if (path == transactionsPath) Fail("disk full");
        };
      },
      [this] {
        suite.journal->beforeStatement = [](const std::string& sql) {
          if (Mentions(sql, "Delete from QUESTIONHISTORY")) Fail("table is locked");
        };
      },
      [this] { suite.fileHandling->failingMember = "StoreFile(" + questionsPath; }};
  for (std::size_t stage = 0; stage < failures.size(); ++stage) {
    suite.faults->onLoad = suite.faults->onSave = nullptr;
    suite.journal->beforeStatement = nullptr;
    failures[stage]();

    suite.Run();

    EXPECT_THAT(suite.fileHandling->marked, IsEmpty()) << "stage " << stage;
    EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY where Q_ORIGINATOR = 'jdoe'"), ElementsAre("2"))
        << "stage " << stage;
  }
}

TEST_F(ArchivePurgeTest, AMarkThatCannotBeTakenBackDoesNotKeepTheNextCustomerFromBeingArchived) {
  suite.fileHandling->failingMember = "SetInUse(NoBP_jdoe_SR.xml,0)";

  suite.Run();

  ExpectJdoesRowsKeptAndZoeArchived();
  EXPECT_THAT(NewMessages(), Contains("Editing of Archive file " + questionsPath + " failed1"));
}

TEST_F(ArchivePurgeTest, AMarkThatSomebodyElseHasSetIsNotTakenBackByAFailedStage) {
  suite.fileHandling->inUse = true;
  suite.fileHandling->calls.clear();
  suite.faults->onSave = [this](const std::string& path) {
    if (path == questionsPath) Fail("disk full");
  };

  suite.Run();

  EXPECT_THAT(suite.fileHandling->calls, Not(Contains("SetInUse(NoBP_jdoe_SR.xml,0)")));
  EXPECT_THAT(suite.fileHandling->calls, Contains("SetInUse(NoBP_zoe_SR.xml,0)"));
}

TEST_F(ArchivePurgeTest, FailuresAreLinesOfTheRunLogOnly) {
  suite.faults->onSave = [this](const std::string& path) {
    if (path == questionsPath) Fail("disk full");
  };

  suite.Run();

  EXPECT_THAT(*suite.test.log, IsEmpty());
}

TEST_F(ArchivePurgeTest, TheRunAfterAFailureGoesThrough) {
  FailCommits(2);
  suite.Run();

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1", "2"));
}

TEST_F(ArchivePurgeTest, NoConnectionStaysOpen) {
  suite.Run();

  EXPECT_EQ(suite.journal->openConnections, 0);
  EXPECT_EQ(suite.journal->openRecordsets, 0);
}

}  // namespace
}  // namespace orvane_test
