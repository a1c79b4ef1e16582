#include <algorithm>

#include "tests/solve/solve_test.hpp"

namespace orvane_test {
namespace {

class HistoryTest : public SolveTest {
 protected:
  HistoryTest() {
    AddLabel("LBLQX3388", 1033, "Question");
    AddLabel("LBLQX3429", 1033, "Answer");
  }
  static std::string Post(const std::string& date, const std::string& text) {
    return "\x01\x02\x03\x04 " + date + text;
  }
  static std::string Answer(const std::string& date, const std::string& text) {
    return "\x04\x03\x02\x01 " + date + text;
  }
  void SetHistory(const std::string& posts, const std::string& answers) {
    database_.Run("UPDATE QUESTIONS SET Q_TEXT = '" + posts + "', A_TEXT = '" + answers +
                  "' WHERE Q_ID = 26");
  }
  // heading + text, one for each entry.
  Texts Separate(int questionId = 26) {
    Texts result;
    count_ = -1;
    for (const auto& entry : peer_.SeparateData(questionId, count_))
      result.push_back(entry.heading + entry.text);
    return result;
  }
  static std::string Q(const std::string& date) {
    return "<b><font color=red>Question : " + date + "</font></b>";
  }
  static std::string A(const std::string& date) {
    return "<b><font color=green>Answer : " + date + "</font></b>";
  }

  std::int32_t count_ = 0;
  SolveOnNoResponsePeer peer_{job_};
};

TEST_F(HistoryTest, EntriesAreSortedByDateAndHeaded) {
  SetHistory(Post("2004-07-20 10:00:00.000", "first") + Post("2004-07-22 10:00:00.000", "third"),
             Answer("2004-07-23 10:00:00.000", "fourth") + Answer("2004-07-21 10:00:00.000", "second"));
  EXPECT_EQ(Separate(),
            (Texts{Q("7/20/2004 10:00:00[3,1033]") + "first", A("7/21/2004 10:00:00[3,1033]") + "second",
                   Q("7/22/2004 10:00:00[3,1033]") + "third", A("7/23/2004 10:00:00[3,1033]") + "fourth"}));
  EXPECT_EQ(count_, 4);
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(HistoryTest, AtTheSameDateAnAnswerComesBeforeAQuestion) {
  SetHistory(Post("2004-07-20 10:00:00.000", "post"), Answer("2004-07-20 10:00:00.000", "answer"));
  EXPECT_EQ(Separate(),
            (Texts{A("7/20/2004 10:00:00[3,1033]") + "answer", Q("7/20/2004 10:00:00[3,1033]") + "post"}));
}

TEST_F(HistoryTest, EntriesOfOneKindAndDateKeepTheirOrder) {
  SetHistory(Post("2004-07-20 10:00:00.000", "a") + Post("2004-07-20 10:00:00.000", "b"), "");
  EXPECT_EQ(Separate(),
            (Texts{Q("7/20/2004 10:00:00[3,1033]") + "a", Q("7/20/2004 10:00:00[3,1033]") + "b"}));
}

TEST_F(HistoryTest, EmptyOrNullTextsHaveNoEntries) {
  SetHistory("", "");
  EXPECT_EQ(Separate(), Texts{});
  EXPECT_EQ(count_, 0);
  database_.Run("UPDATE QUESTIONS SET Q_TEXT = NULL, A_TEXT = NULL WHERE Q_ID = 26");
  EXPECT_EQ(Separate(), Texts{});
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(HistoryTest, TextBeforeTheFirstSeparatorIsIgnored) {
  SetHistory("no separator at all", "ignored" + Answer("2004-07-20 10:00:00.000", "kept"));
  EXPECT_EQ(Separate(), (Texts{A("7/20/2004 10:00:00[3,1033]") + "kept"}));
}

TEST_F(HistoryTest, ASeparatorOfTheOtherKindIsText) {
  SetHistory(Post("2004-07-20 10:00:00.000", "a\x04\x03\x02\x01z"), "");
  EXPECT_EQ(Separate(), (Texts{Q("7/20/2004 10:00:00[3,1033]") + "a\x04\x03\x02\x01z"}));
}

TEST_F(HistoryTest, AShortEntryHasNoText) {
  SetHistory(Post("2004-07-20 10:00:00", ""), "");  // 20 characters
  EXPECT_EQ(Separate(), (Texts{Q("7/20/2004 10:00:00[3,1033]")}));
  SetHistory("\x01\x02\x03\x04", "");
  EXPECT_EQ(Separate(), (Texts{Q("")}));
  EXPECT_EQ(count_, 1);
}

TEST_F(HistoryTest, ADateThatIsNoneIsShownAsItStands) {
  SetHistory(Post("sometime in last summer", "x") + Post("2004-07-20 10:00:00.000", "y"), "");
  EXPECT_EQ(Separate(), (Texts{Q("7/20/2004 10:00:00[3,1033]") + "y", Q("sometime in last summer") + "x"}));
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(HistoryTest, OnlyThePointBehindTheTimeBeginsAFraction) {
  SetHistory(Post("07.20.2004 10:00:00.000", "x") + Post("07.21.2004 10:00:00    ", "y"), "");
  EXPECT_EQ(Separate(),
            (Texts{Q("7/20/2004 10:00:00[3,1033]") + "x", Q("7/21/2004 10:00:00[3,1033]") + "y"}));
}

TEST_F(HistoryTest, CharactersAreCountedNotBytes) {
  SetHistory(
      "\x01\x02\x03\x04\xE2\x82\xAC"
      "2004-07-20 10:00:00.000\xC3\xA9t\xC3\xA9",
      "");
  EXPECT_EQ(Separate(), (Texts{Q("7/20/2004 10:00:00[3,1033]") + "\xC3\xA9t\xC3\xA9"}));
}

TEST_F(HistoryTest, TheDateIsTwentyThreeCharactersWhateverTheirBytes) {
  const std::string date = "éééééééééééééééééééééé!";  // 23 characters, 45 bytes
  SetHistory("\x01\x02\x03\x04|" + date + "text", "");
  EXPECT_EQ(Separate(), (Texts{Q(date) + "text"}));
}

TEST_F(HistoryTest, SeparatorsAloneAreEntriesWithoutDateAndText) {
  SetHistory("\x01\x02\x03\x04\x01\x02\x03\x04", "\x04\x03\x02\x01");
  EXPECT_EQ(Separate(), (Texts{A(""), Q(""), Q("")}));
  EXPECT_EQ(count_, 3);
}

TEST_F(HistoryTest, AnEntryOfTwentyFourCharactersIsAllDate) {
  SetHistory(Post("2004-07-20 10:00:00.000", ""), "");
  EXPECT_EQ(Separate(), (Texts{Q("7/20/2004 10:00:00[3,1033]")}));
}

TEST_F(HistoryTest, AMissingTableIsReportedAndThereAreNoEntries) {
  database_.Run("DROP TABLE QUESTIONS");
  EXPECT_EQ(Separate(), Texts{});
  EXPECT_EQ(count_, 0);
  ASSERT_EQ(Log().size(), 1U);
  EXPECT_EQ(Log()[0].find("OrvaneProcess.SolveOnNoResponse.SeparateData caught: "), 0U) << Log()[0];
}

TEST_F(HistoryTest, TenThousandEntriesAreSortedByDate) {
  std::string posts;
  for (int i = 9999; i >= 0; --i) {
    const std::string number = std::to_string(10000 + i).substr(1);
    posts += Post("2004-07-20 10:0" + number.substr(0, 1) + ":00." + number.substr(1), number);
  }
  SetHistory(posts, "");
  const Texts entries = Separate();
  ASSERT_EQ(entries.size(), 10000U);
  EXPECT_TRUE(std::is_sorted(entries.begin(), entries.end(), [](const std::string& a, const std::string& b) {
    return a.substr(a.size() - 4) < b.substr(b.size() - 4);
  }));
}

TEST_F(HistoryTest, HeadingsAreInTheOriginatorsLanguage) {
  directory_->people["jan"] = {.languageId = 1043};
  AddLabel("LBLQX3388", 1043, "Vraag");
  database_.Run("UPDATE QUESTIONS SET Q_ORIGINATOR = 'jan' WHERE Q_ID = 26");
  SetHistory(Post("2004-07-20 10:00:00.000", "x"), "");
  EXPECT_EQ(Separate(), (Texts{"<b><font color=red>Vraag : 7/20/2004 10:00:00[3,1043]</font></b>x"}));
}

TEST_F(HistoryTest, AQuestionThatDoesNotExistHasNoEntries) {
  EXPECT_EQ(Separate(99), Texts{});
  EXPECT_EQ(count_, 0);
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(HistoryTest, AnUnknownOriginatorIsReportedAndThereAreNoEntries) {
  directory_->people.clear();
  SetHistory(Post("2004-07-20 10:00:00.000", "x"), "");
  EXPECT_EQ(Separate(), Texts{});
  EXPECT_EQ(Log(), (Texts{"OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).",
                          "OrvaneProcess.SolveOnNoResponse.SeparateData caught: "
                          "Object variable or With block variable not set (91)."}));
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

TEST_F(HistoryTest, AFailureAfterTheEntriesWereGatheredKeepsThem) {
  SetHistory(Post("2004-07-20 10:00:00.000", "x"), Answer("2004-07-21 10:00:00.000", "y"));
  // The texts' own record sets are closed before the question's is.
  int closed = 0;
  adodb_->before = [&closed](std::string_view step) {
    if (step == "Recordset.Close" && ++closed == 3) throw automation::Error(70, "I", "Permission denied");
  };
  EXPECT_EQ(Separate(),
            (Texts{Q("7/20/2004 10:00:00[3,1033]") + "x", A("7/21/2004 10:00:00[3,1033]") + "y"}));
  EXPECT_EQ(count_, 2);
  EXPECT_EQ(Log(), (Texts{"METHOD: \r\nOrvaneUtilities.CloseRecordset caught: Permission denied(70).",
                          "OrvaneProcess.SolveOnNoResponse.SeparateData caught: Permission denied (70)."}));
  EXPECT_EQ(adodb_->openConnections, 0);
  EXPECT_EQ(adodb_->openRecordsets, 0);
}

// Without the texts' database the headings are there, only their labels are empty.
TEST_F(HistoryTest, LabelsThatCannotBeReadAreEmpty) {
  SetHistory(Post("2004-07-20 10:00:00.000", "x"), "");
  adodb_->beforeStatement = [](const std::string& sql) {
    if (sql.find("I18NTEXT") != std::string::npos) throw automation::Error(70, "I", "Permission denied");
  };
  EXPECT_EQ(Separate(), (Texts{"<b><font color=red> : 7/20/2004 10:00:00[3,1033]</font></b>x"}));
  EXPECT_EQ(Log(), Texts{});
}

TEST_F(HistoryTest, ACountAndEntriesThatAreHandedInCountForNothing) {
  std::int32_t count = 7;
  EXPECT_TRUE(peer_.SeparateData(99, count, {{"heading", "text of another question"}}).empty());
  EXPECT_EQ(count, 0);
  SetHistory(Post("2004-07-20 10:00:00.000", "x"), "");
  EXPECT_EQ(peer_.SeparateData(26, count, {{"heading", "text of another question"}}).size(), 1U);
  EXPECT_EQ(count, 1);
}

TEST_F(HistoryTest, TheQuestionIsReadWhole) {
  Separate();
  ASSERT_FALSE(adodb_->recordsets.empty());
  EXPECT_EQ(adodb_->recordsets[0].sql, "select * from QUESTIONS where Q_ID = 26");
}

}  // namespace
}  // namespace orvane_test
