#include "tests/solve/whole_suite_test.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace orvane_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

INSTANTIATE_TEST_SUITE_P(Engines, WholeSuiteTest, testing::ValuesIn(SuiteTablesMakers()), NameOfTables);

TEST_P(WholeSuiteTest, TextBodiesAreInTheLanguageOfTheirReader) {
  suite_.Add({{26, kLongAgo, "", {}},
              {27, kLongAgo, "", {{"Q_ORIGINATOR", "ken"}}},
              {28, "", kLongAgo, {{"Q_ORIGINATOR", "flagged"}}}});
  suite_.Run();
  ASSERT_EQ(suite_.doubles_->mails.size(), 3U);
  EXPECT_EQ(suite_.doubles_->mails[0].textBody,
            "Anna Aalto - good day,\r\n\r\nWe have answered your service request and have not heard from you "
            "since. "
            "The attached page shows the request with our answer. You can reply on our site:\r\n\r\n"
            "https://suite.example/s.asp?Q=1A0\r\n"
            "\r\n\r\nWithout a reply from you, we will conclude this request on 7/29/2004 9:5:3\t  "
            "(that is, after 72 hours)\r\n");
  EXPECT_THAT(suite_.doubles_->mails[1].textBody, HasSubstr("佐藤 健 "));
  EXPECT_THAT(suite_.doubles_->mails[1].textBody, HasSubstr("2004/07/29 9:5:3\t  ("));
  EXPECT_THAT(suite_.doubles_->mails[2].textBody,
              HasSubstr("Dear customer,\r\n\r\nWe have not received a reply"));
}

TEST_P(WholeSuiteTest, PagesAreInTheLanguageOfTheirReaderAndShowMarkupAsText) {
  suite_.Add({{26,
               kLongAgo,
               "",
               {{"Q_DESC", "<script>alert(1)</script>"},
                {"Q_TEXT", std::string(kPost) + "<img src=x onerror=alert(1)>\r\n& more"},
                {"A_TEXT", std::string(kAnswer) + "Which\tone?"}}},
              {27, "", kLongAgo, {{"Q_ORIGINATOR", "helga"}, {"Q_DESC", "Anzeige fällt aus"}}}});
  suite_.Run();
  ASSERT_EQ(suite_.doubles_->mails.size(), 2U);
  ASSERT_EQ(suite_.doubles_->mails[0].attachments.size(), 1U);
  const std::string& english = suite_.doubles_->mails[0].attachments[0].second;
  EXPECT_THAT(english, HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt;"));
  EXPECT_THAT(english, HasSubstr("&lt;img src=x onerror=alert(1)&gt;"));
  EXPECT_THAT(english, Not(HasSubstr("<script")));
  EXPECT_THAT(english, Not(HasSubstr("<img")));
  EXPECT_THAT(english, HasSubstr("Questions and answers"));
  EXPECT_THAT(english, HasSubstr("Which    one?"));
  const std::string& german = suite_.doubles_->mails[1].attachments[0].second;
  EXPECT_THAT(german, HasSubstr("Anzeige f&#228;llt aus"));
  EXPECT_TRUE(
      std::all_of(german.begin(), german.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
  EXPECT_THAT(suite_.Log(), IsEmpty());
}

TEST_P(WholeSuiteTest, AMailNeverTakesThePageOfAnotherRunAlong) {
  namespace fs = std::filesystem;
  const fs::path pickup = suite_.Home() / "pickup";
  fs::create_directory(pickup);
  suite_.UseTransport({.pickupDirectory = pickup.string()});
  suite_.Add({{26, "", kLongAgo}});
  int pages = 0;
  suite_.beforeMail_ = [this, &pages] {
    for (const fs::directory_entry& page : fs::directory_iterator(suite_.Home() / "Data" / "HTML")) {
      const fs::path path = page.path();
      fs::remove(path);
      std::ofstream(path) << "the page of another customer";
      ++pages;
    }
  };
  suite_.Run();
  EXPECT_EQ(pages, 1);
  EXPECT_TRUE(fs::is_empty(pickup)) << "the mail is refused";
  ASSERT_EQ(suite_.PagesLeft().size(), 1U) << "the other run's page is not this run's to delete";
  EXPECT_EQ(TemporaryFolder::Read(suite_.Home() / "Data" / "HTML" / suite_.PagesLeft().front()),
            "the page of another customer");
  EXPECT_THAT(suite_.Rows("SELECT Q_ID FROM REMINDER"), IsEmpty());
  EXPECT_THAT(suite_.Log(), IsEmpty());

  suite_.beforeMail_ = nullptr;
  fs::remove_all(suite_.Home() / "Data" / "HTML");
  fs::create_directory(suite_.Home() / "Data" / "HTML");
  suite_.Add({{27, "", kLongAgo}});
  suite_.Run();
  EXPECT_FALSE(fs::is_empty(pickup)) << "an undisturbed mail leaves";
  EXPECT_THAT(suite_.PagesLeft(), IsEmpty());
}

TEST_P(WholeSuiteTest, ARowWithoutItsQuestionHoldsUpEveryDueRowBehindItOnEveryRun) {
  suite_.Add({{26, "", kLongAgo}});
  suite_.AddReminderWithoutQuestion(27, "", kLongAgo);
  suite_.Add({{28, "", kLongAgo}, {29, kLongAgo, ""}});
  for (int run = 0; run < 2; ++run) {
    suite_.Run();
    EXPECT_THAT(suite_.Rows("SELECT Q_ID, T2_DATE FROM REMINDER ORDER BY Q_ID"),
                ElementsAre("27|1999-12-31 23:59:59", "28|1999-12-31 23:59:59", "29|NULL"));
  }
  EXPECT_EQ(suite_.doubles_->mails.size(), 1U);
  EXPECT_THAT(suite_.Log(), ElementsAre("OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                                        "Operation is not allowed when the object is open. (3705).",
                                        "OrvaneProcess.SolveOnNoResponse.SolveOnNoResponse caught: "
                                        "Operation is not allowed when the object is open. (3705)."));
  EXPECT_EQ(suite_.Lines("outbox/escalation.jsonl").size(), 2U);
}

TEST_P(WholeSuiteTest, AReminderIsFollowedByItsConclusionInALaterRun) {
  suite_.Add({{26, kLongAgo, ""}});
  suite_.Run();
  suite_.Run();  // nothing is due
  suite_.environment_.now = automation::AddHours(suite_.environment_.now, 48);
  suite_.Run();  // due now, but not for a minute yet
  EXPECT_THAT(suite_.Rows("SELECT Q_ID, T2_DATE FROM REMINDER"), ElementsAre("26|2004-07-28 09:05:03"));
  suite_.environment_.now = automation::AddMinutes(suite_.environment_.now, 1);
  suite_.Run();
  EXPECT_THAT(suite_.Rows("SELECT Q_ID FROM REMINDER"), IsEmpty());
  EXPECT_THAT(suite_.Rows("SELECT Q_STATUS FROM QUESTIONS"), ElementsAre("160"));
  EXPECT_EQ(suite_.doubles_->mails.size(), 2U);
}

}  // namespace
}  // namespace orvane_test
