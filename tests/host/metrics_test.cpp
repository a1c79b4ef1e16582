#include "host/metrics.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "components/registration/register_jobs.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane::host {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(MetricsTextTest, HasAllFamiliesWithTheirJobs) {
  JobMetrics archive{.job = "Archive", .exitCode = 70};
  archive.run = JobMetrics::Run{1790000000.5, 1790000001.75, 1.25, {}};
  archive.run->counts.Add(
      effects::RowsChange{ADODB::Change::Delete, "TRANSACTIONS", {{}, {}, {}}, false, {}});
  archive.run->counts.Add(effects::RowsChange{ADODB::Change::Delete, "QUESTIONHISTORY", {{}}, false, {}});
  archive.run->counts.AddFailure(
      effects::RowsChange{ADODB::Change::Delete, "QUESTIONHISTORY", {{}}, false, {}},
      automation::Outcome::Unknown);
  archive.run->counts.Add(effects::MailSending{"a@b.example", "s"});
  archive.run->counts.AddFailure(effects::MailSending{"a@b.example", "s"}, automation::Outcome::NotDone);
  archive.oldestDueReminder = 7200;
  const std::string text = MetricsText({archive, {.job = "CleanUp", .exitCode = 75}});
  for (const char* line :
       {"# TYPE orvane_run_start_timestamp_seconds "
        "gauge\norvane_run_start_timestamp_seconds{job=\"Archive\"} 1790000000.5\n",
        "\norvane_run_end_timestamp_seconds{job=\"Archive\"} 1790000001.75\n",
        "\norvane_run_exit_code{job=\"Archive\"} 70\norvane_run_exit_code{job=\"CleanUp\"} 75\n",
        "\norvane_run_duration_seconds{job=\"Archive\"} 1.25\n",
        "\norvane_effects_total{job=\"Archive\",op=\"rows.delete\",outcome=\"done\"} 3\n",
        "\norvane_effects_total{job=\"Archive\",op=\"rows.delete\",outcome=\"unknown\"} 1\n",
        "\norvane_effects_total{job=\"Archive\",op=\"mail.send\",outcome=\"failed\"} 1\n",
        "\norvane_mails_refused_total{job=\"Archive\"} 1\n",
        "\norvane_oldest_due_reminder_seconds{job=\"Archive\"} 7200\n"}) {
    EXPECT_THAT(text, HasSubstr(line));
  }
  EXPECT_THAT(text, Not(HasSubstr("_seconds{job=\"CleanUp\"}")));
  EXPECT_TRUE(text.ends_with('\n'));
}

class RunMetricsTest : public testing::Test {
 protected:
  static std::vector<const JobInfo*> Jobs() { return {FindJob("DormantUserExpiry"), FindJob("CleanUp")}; }
  static effects::EntryPtr Entry(effects::Entry::What what) {
    return std::make_shared<effects::Entry>(effects::Entry{1, {}, std::move(what)});
  }
  std::string Text() const { return orvane_test::TemporaryFolder::Read(file_); }

  orvane_test::TemporaryFolder folder_;
  const std::filesystem::path file_ = folder_.Path() / "orvane.prom";
  std::ostringstream out_;
  std::ostringstream err_;
  const Console console_{out_, err_};
};

TEST_F(RunMetricsTest, TheFileIsReplacedWhenAJobEndsAndWhenTheCallDoes) {
  folder_.Write("orvane.prom", "old");
  RunMetrics metrics(file_, folder_.Path(), Jobs(), console_);
  const auto listener = metrics.Listen(nullptr);
  listener->OnEntry(Entry(effects::RunStart{.job = "DormantUserExpiry"}));
  EXPECT_EQ(Text(), "old");
  listener->OnEntry(Entry(effects::RunEnd{1, 0.5, {}}));
  EXPECT_THAT(Text(), AllOf(HasSubstr("orvane_run_exit_code{job=\"DormantUserExpiry\"} 1\n"),
                            Not(HasSubstr("CleanUp"))));
  metrics.End(77);
  EXPECT_THAT(Text(), AllOf(HasSubstr("orvane_run_exit_code{job=\"DormantUserExpiry\"} 1\n"),
                            HasSubstr("orvane_run_exit_code{job=\"CleanUp\"} 77\n")));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 1);
}

TEST_F(RunMetricsTest, AFileThatCannotBeWrittenIsToldOnce) {
  RunMetrics metrics(folder_.Path() / "none/orvane.prom", folder_.Path(), Jobs(), console_);
  metrics.End(0);
  metrics.End(0);
  EXPECT_EQ(err_.str(), "warning: the metrics could not be written: " +
                            (folder_.Path() / "none/orvane.prom").string() + ": No such file or directory\n");
}

}  // namespace
}  // namespace orvane::host
