#include "host/metrics.hpp"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

#include "components/registration/register_jobs.hpp"
#include "platform/adodb/session/connection_string.hpp"
#include "platform/adodb/sql/iso_date_time.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/file_replacement.hpp"
#include "platform/locale/icu_locale.hpp"
#include "run/exit_codes.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/suite_home.hpp"

namespace orvane::host {
namespace {

std::string Number(double number) {
  char text[64];
  const auto [end, error] = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed);
  return std::string(text, end);
}

double Seconds(std::chrono::system_clock::time_point moment) {
  const auto since = std::chrono::floor<std::chrono::milliseconds>(moment.time_since_epoch());
  return static_cast<double>(since.count()) / 1000;
}

class Text {
 public:
  // Starts a family of samples.
  void Family(std::string_view name, std::string_view type, std::string_view help) {
    name_ = name;
    text_.append("# HELP ").append(name).append(" ").append(help).append("\n");
    text_.append("# TYPE ").append(name).append(" ").append(type).append("\n");
  }
  void Sample(const std::string& job, const std::string& more, double value) {
    text_.append(name_).append("{job=\"").append(job).append("\"").append(more).append("} ");
    text_ += Number(value) + '\n';
  }
  std::string Result() { return std::move(text_); }

 private:
  std::string_view name_;
  std::string text_;
};

// For how long the reminder that is due longest has been waiting, in seconds.
double OldestDueReminder(const std::filesystem::path& homePath) {
  const SuiteHome home(homePath);
  const Vantrel::SiteFile site = ReadConfiguration(home);
  automation::Runtime runtime;
  runtime.locale = automation::MakeLocale({.name = automation::LocaleNameFromEnvironment()});
  const automation::RuntimeScope scope(runtime);
  using ADODB::engine::ConnectionString;
  ConnectionString text = ConnectionString::Parse(site.Connection("Orvane", "Orvane"));
  const auto providers = DatabaseProviders(home);
  const auto session = ADODB::engine::ProviderOf(providers, text)->Connect(text);
  double oldest = 0;
  // By its second date where the reminder was sent, otherwise by its first.
  for (const char* sql : {"SELECT MIN(T1_DATE) FROM REMINDER WHERE R_STATUS = 150 AND T2_DATE IS NULL",
                          "SELECT MIN(T2_DATE) FROM REMINDER WHERE R_STATUS = 150"}) {
    const auto rows = session->Query(sql, {});
    if (!rows->Next()) continue;
    const automation::Variant value = rows->Value(0);
    std::optional<automation::DateTime> due;
    if (value.IsDate()) due = std::get<automation::DateTime>(value.Get());
    if (value.IsText()) due = ADODB::engine::ParseIso(std::get<std::string>(value.Get()));
    if (!due) continue;
    const auto waited =
        static_cast<double>(automation::Now().UnixMicroseconds() - due->UnixMicroseconds()) / 1e6;
    oldest = std::max(oldest, waited);
  }
  // The job takes what lies a minute back.
  return oldest < 60 ? 0 : std::floor(oldest);
}

}  // namespace

std::string MetricsText(const std::vector<JobMetrics>& jobs) {
  Text text;
  const auto ofRuns = [&](std::string_view name, std::string_view help, double JobMetrics::Run::*member) {
    text.Family(name, "gauge", help);
    for (const JobMetrics& job : jobs) {
      if (job.run) text.Sample(job.job, "", (*job.run).*member);
    }
  };
  ofRuns("orvane_run_start_timestamp_seconds", "When the job's last run began.", &JobMetrics::Run::started);
  ofRuns("orvane_run_end_timestamp_seconds", "When it ended.", &JobMetrics::Run::ended);
  text.Family("orvane_run_exit_code", "gauge", "Its exit code; of a job that was not begun, why.");
  for (const JobMetrics& job : jobs) text.Sample(job.job, "", job.exitCode);
  ofRuns("orvane_run_duration_seconds", "How long it took.", &JobMetrics::Run::duration);
  text.Family("orvane_effects_total", "counter",
              "What it changed, by kind as in journals, and what came of it.");
  for (const JobMetrics& job : jobs) {
    if (!job.run) continue;
    std::map<std::string, effects::Counts::Count> byOp;
    for (const auto& [key, count] : job.run->counts.All()) {
      effects::Counts::Count& sum = byOp[key.first];
      sum.done += count.done;
      sum.failed += count.failed;
      sum.unknown += count.unknown;
    }
    for (const auto& [op, count] : byOp) {
      for (const auto& [outcome, number] : {std::pair("done", count.done), std::pair("failed", count.failed),
                                            std::pair("unknown", count.unknown)}) {
        text.Sample(job.job, ",op=\"" + op + "\",outcome=\"" + outcome + "\"", static_cast<double>(number));
      }
    }
  }
  text.Family("orvane_mails_refused_total", "counter", "Mails of it that were not taken.");
  for (const JobMetrics& job : jobs) {
    if (!job.run) continue;
    const effects::Counts::Count mails = job.run->counts.Of("mail.send");
    text.Sample(job.job, "", static_cast<double>(mails.failed + mails.unknown));
  }
  text.Family("orvane_oldest_due_reminder_seconds", "gauge",
              "For how long the oldest reminder that the run has left has been due; 0: none is.");
  for (const JobMetrics& job : jobs) {
    if (job.oldestDueReminder) text.Sample(job.job, "", *job.oldestDueReminder);
  }
  return text.Result();
}

class RunMetrics::Listener final : public effects::Listener {
 public:
  Listener(RunMetrics& owner, std::shared_ptr<effects::Listener> other)
      : owner_(owner), other_(std::move(other)) {}

  void OnEntry(const effects::EntryPtr& entry) override {
    if (other_) other_->OnEntry(entry);
    if (const auto* start = std::get_if<effects::RunStart>(&entry->what)) {
      job_ = start->job;
      started_ = Seconds(entry->time);
    } else if (const auto* end = std::get_if<effects::RunEnd>(&entry->what)) {
      JobMetrics& metrics = owner_.Of(job_);
      metrics.exitCode = end->exit;
      metrics.run = {started_, Seconds(entry->time), end->seconds, end->counts};
      owner_.ended_.push_back(job_);
      const bool isReminding = OrvaneProcess::kSolveOnNoResponseProgId.ends_with('.' + job_);
      if (isReminding && end->exit != kUnavailable) {
        try {
          metrics.oldestDueReminder = OldestDueReminder(owner_.home_);
        } catch (const std::exception&) {
          // Nobody can tell; the exit code says why.
        }
      }
      owner_.Write();
    }
  }

 private:
  RunMetrics& owner_;
  const std::shared_ptr<effects::Listener> other_;
  std::string job_;
  double started_ = 0;
};

RunMetrics::RunMetrics(std::filesystem::path file, std::filesystem::path home,
                       const std::vector<const JobInfo*>& jobs, const Console& console)
    : file_(std::move(file)), home_(std::move(home)), console_(console) {
  for (const JobInfo* job : jobs) Of(std::string(ClassName(*job)));
}

RunMetrics::~RunMetrics() = default;

JobMetrics& RunMetrics::Of(const std::string& job) {
  const auto found = std::find_if(jobs_.begin(), jobs_.end(),
                                  [&job](const JobMetrics& metrics) { return metrics.job == job; });
  return found != jobs_.end() ? *found : jobs_.emplace_back(JobMetrics{.job = job});
}

std::shared_ptr<effects::Listener> RunMetrics::Listen(std::shared_ptr<effects::Listener> other) {
  return std::make_shared<Listener>(*this, std::move(other));
}

void RunMetrics::End(int exitCode) {
  for (JobMetrics& job : jobs_) {
    if (std::find(ended_.begin(), ended_.end(), job.job) == ended_.end()) job.exitCode = exitCode;
  }
  ended_.clear();
  for (const JobMetrics& job : jobs_) ended_.push_back(job.job);
  Write();
}

// Jobs that are still to come are left out: what the file held of them is gone until they have run.
void RunMetrics::Write() {
  std::vector<JobMetrics> told;
  for (const JobMetrics& job : jobs_) {
    if (std::find(ended_.begin(), ended_.end(), job.job) != ended_.end()) told.push_back(job);
  }
  try {
    base::FileReplacement replacement(file_.string());
    replacement.Write(MetricsText(told));
    replacement.Commit(base::FileReplacement::Durability::Content);
  } catch (const std::system_error& error) {
    if (std::exchange(hasFailed_, true)) return;
    console_.err << "warning: the metrics could not be written: " << file_.string() << ": "
                 << error.code().message() << std::endl;
  }
}

}  // namespace orvane::host
