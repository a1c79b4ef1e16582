#include <gmock/gmock.h>

#include <cstdlib>
#include <ctime>

#include "host/arguments.hpp"
#include "host/report/recorded_run.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using orvane::host::FailuresFirst;
using orvane::host::RecordedRun;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Strings = std::vector<std::string>;

constexpr const char* kCounts = R"({"row.delete":{"PROSPECT":1204,"QUESTIONS":2},"mail.send":1})";

class ReportTest : public testing::Test {
 protected:
  // A journal of the day's minute; without an end the run was killed.
  std::string Journal(int minute, const std::string& job, const std::string& end,
                      const std::string& more = {}) {
    char name[64];
    std::snprintf(name, sizeof name, "20261122T%02d%02d00Z-4711-", minute / 60, minute % 60);
    const std::string run = name + job;
    const std::string head = R"({"v":1,"run":")" + run + R"(","seq":)";
    const std::string tail = R"(,"time":"2026-11-22T01:15:00.000Z","op":)";
    std::string text =
        head + "1" + tail + R"("run.start","job":")" + job +
        R"(","preview":false,"at":"2026-11-22 01:15:00","pid":4711,"host":"alpha","version":"1.0.0"})" + "\n";
    int seq = 2;
    if (!more.empty()) text += head + std::to_string(seq++) + tail + R"("log","text":")" + more + "\"}\n";
    if (!end.empty()) text += head + std::to_string(seq) + tail + R"("run.end",)" + end + "}\n";
    folder_.Write("journal/" + run + ".jsonl", text);
    return run;
  }
  static std::string End(int exit, const std::string& counts = kCounts) {
    return R"("exit":)" + std::to_string(exit) + R"(,"seconds":91.25,"counts":)" + counts;
  }
  std::vector<RecordedRun> Runs(const Strings& names = {}) {
    return orvane::host::ReadRuns(folder_.Path() / "journal", names);
  }
  // What the validator says of the page; empty for a page without a fault.
  std::string Faults(const std::string& page) {
    const std::string file = folder_.Write("page.html", page).string();
    const std::string told = (folder_.Path() / "faults").string();
    const int ended = std::system(("tidy -quiet -errors -utf8 " + file + " 2> " + told).c_str());
    const std::string faults = orvane_test::TemporaryFolder::Read(told);
    return ended == 0 ? faults : "tidy ended with " + std::to_string(ended) + "\n" + faults;
  }

  orvane_test::TemporaryFolder folder_;
};

TEST_F(ReportTest, IsEmptyWithoutJournals) {
  EXPECT_TRUE(Runs().empty());
  EXPECT_EQ(orvane::host::ReportText({}, false), "");
  EXPECT_EQ(orvane::host::ReportJson({}), "");
  EXPECT_EQ(Faults(orvane::host::ReportHtml({}, "/srv/home")), "");
}

TEST_F(ReportTest, FailuresComeFirst) {
  const std::string clean = Journal(1, "CleanUp", End(0));
  const std::string warned = Journal(2, "SolveOnNoResponse", End(1, R"({"failed":{"mail.send":1},"log":2})"));
  const std::string killed = Journal(3, "Archive", "");
  const std::string stopped = Journal(4, "Archive", End(69), "the directory went away");
  folder_.Write("journal/20261122T000500Z-1-Archive.jsonl", "no journal\n");
  Strings order;
  for (const RecordedRun& run : FailuresFirst(Runs())) order.push_back(run.run);
  EXPECT_THAT(order, ElementsAre("20261122T000500Z-1-Archive", stopped, killed, warned, clean));
}

TEST_F(ReportTest, TheTextTellsEachRunInALine) {
  const std::string clean = Journal(1, "CleanUp", End(0));
  const std::string stopped = Journal(4, "Archive", End(69, "{}"), "the directory went away\\u001b[31m");
  const std::string killed = Journal(3, "Archive", "");
  EXPECT_EQ(
      orvane::host::ReportText(FailuresFirst(Runs()), false),
      stopped + "  exit 69, 91.2 s: the directory went away [31m\n" + killed +
          "  unfinished: no last line: the run was killed, or has not ended; its last effect is uncertain\n" +
          clean + "  finished, 91.2 s, mail.send 1, row.delete 1,206\n");
  EXPECT_EQ(orvane::host::ReportText(Runs({clean}), true),
            clean +
                "  finished, 91.2 s, mail.send 1, row.delete 1,206\n  mail.send  1\n  row.delete  PROSPECT  "
                "1,204\n  row.delete  QUESTIONS  2\n");
}

TEST_F(ReportTest, TheObjectsHoldWhatIsKnown) {
  const std::string clean = Journal(1, "CleanUp", End(0));
  EXPECT_EQ(
      orvane::host::ReportJson(Runs()),
      R"({"v":1,"run":")" + clean +
          R"(","job":"CleanUp","started":"2026-11-22 00:01:00","ending":"finished","pid":4711,"host":"alpha",)"
          R"("version":"1.0.0","exit":0,"seconds":91.25,"counts":{"mail.send":{"":1},"row.delete":)"
          R"({"PROSPECT":1204,"QUESTIONS":2}},"failed":{},"unknown":{},"log":0,"known":0})"
          "\n");
}

TEST_F(ReportTest, AnUnknownRunIsAUsageError) {
  Journal(1, "CleanUp", End(0));
  EXPECT_THROW(Runs({"20261122T000200Z-4711-CleanUp"}), orvane::host::UsageError);
}

TEST_F(ReportTest, ThePageIsValidAndShowsNamesAsTheyAre) {
  Journal(1, "CleanUp", End(0, R"({"file.delete":{"<script>alert(1)</script> & \"x\"":3}})"));
  Journal(2, "Archive", End(70, "{}"), "</td><img src=x onerror=alert(2)>\\u0007");
  const std::string page = orvane::host::ReportHtml(Runs(), "/srv/<home>");
  EXPECT_EQ(Faults(page), "");
  EXPECT_THAT(page, Not(HasSubstr("<script")));
  EXPECT_THAT(page, Not(HasSubstr("<img")));
  EXPECT_THAT(page, HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt; &amp; &quot;x&quot;"));
  EXPECT_THAT(page, HasSubstr("<title>Runs of the suite in /srv/&lt;home&gt;</title>"));
  EXPECT_LT(page.find("Needs attention"), page.find("<h2>CleanUp</h2>"));
  EXPECT_NE(Faults("<p>no page</i>"), "");  // the validator sees faults
}

TEST_F(ReportTest, AThousandRunsTakeAMoment) {
  for (int minute = 0; minute < 1000; ++minute) Journal(minute, "CleanUp", End(minute % 50 == 0 ? 70 : 0));
  // Of its own work: the machine may be busy with others'.
  const auto seconds = [] { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; };
  const double begin = seconds();
  const std::vector<RecordedRun> runs = Runs();
  const std::string page = orvane::host::ReportHtml(runs, "/srv/home");
  EXPECT_LT(seconds() - begin, 5);
  EXPECT_EQ(runs.size(), 1000U);
  EXPECT_EQ(Faults(page), "");
  EXPECT_THAT(page, HasSubstr("1,000 runs, 20 of them need attention."));
}

TEST(GroupedTest, GroupsThousands) {
  EXPECT_EQ(orvane::host::Grouped(0), "0");
  EXPECT_EQ(orvane::host::Grouped(999), "999");
  EXPECT_EQ(orvane::host::Grouped(1'000), "1,000");
  EXPECT_EQ(orvane::host::Grouped(1'234'567), "1,234,567");
  EXPECT_EQ(orvane::host::Duration(119.94), "119.9 s");
  EXPECT_EQ(orvane::host::Duration(724), "12 min 4 s");
}

}  // namespace
