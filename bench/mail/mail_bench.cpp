// Reminder mails with rendered pages, against a shell loop of xsltproc and curl.
//
//   bench_mail [MAILS [SHELL_MAILS]]      1,000 mails by the job and 100 by the loop when nothing is given
//
// The job does everything (reading the rows, building the document, rendering, sending, writing the rows
// back); the loop puts the question's id into a document that is there already, renders and sends. Sent is to
// two servers: aiosmtpd, whose own time is a part of the job's that no client can save, and smtp-sink, which
// needs next to none. Into the pickup folder the loop sends with curl, which does not sync the mail as the
// job does; beside it stand the loop that syncs, and one that sends nothing and writes into the folder
// itself.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/mail/mail_parts.hpp"
#include "bench/mail/mail_suite.hpp"
#include "bench/product/bench_suite.hpp"
#include "bench/product/job_run.hpp"
#include "bench/support/bench.hpp"
#include "bench/support/part.hpp"
#include "bench/support/sqlite_file.hpp"
#include "bench/support/work_folder.hpp"

namespace {

namespace fs = std::filesystem;
using namespace orvane_bench;

constexpr double kWantedRatio = 12;
constexpr double kShareOfStatements = 0.3;
constexpr int kRounds = 5;

using Words = std::vector<std::string>;

std::int64_t FilesIn(const fs::path& folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

void WriteLoopInput(const fs::path& work) {
  std::ofstream(work / "document.xml") << MailDocument();
  std::ofstream body(work / "body");
  for (const char c : MailBody()) {
    if (c != '\r') body << c;
  }
  std::ofstream parameters(work / "parameters");
  for (const auto& [label, text] : Captions()) parameters << label << '\t' << text << '\n';
}

// "job HOME MAILS"
void Pass(const Words& words) {
  Timed(std::stoll(words.at(1)), [&] { RunJob(words.at(0), "SolveOnNoResponse"); });
}

// "part NAME HOME MAILS": what the libraries behind a mail need by themselves. "floor" does all of a mail's
// parts before it turns to the next one: a disk that is let alone for a moment takes longer for a sync than
// one that is asked for syncs only.
void RunPart(const Words& words) {
  const std::string& name = words.at(0);
  const int mails = std::stoi(words.at(2));
  MailParts parts(words.at(1));
  const bool all = name == "floor";
  Timed(mails, [&] {
    for (int mail = 1; mail <= mails; ++mail) {
      if (all || name == "rendering") parts.Render();
      if (all || name == "sending") parts.Send();
      if (all || name == "statements") parts.RunStatements(mail);
    }
  });
}

class MailBench {
 public:
  MailBench(Bench& bench, int mails, int shellMails) : bench_(bench), mails_(mails), shellMails_(shellMails) {
    fs::permissions(work_, static_cast<fs::perms>(0755));
    WriteLoopInput(work_);
  }

  // `port` 0 means the pickup folder. The loop's ways stand in shell_loop.sh.
  void Compare(const std::string& way, int port, const std::vector<std::string>& loopWays) {
    const fs::path original = work_ / way / "home";
    fs::create_directories(original.parent_path());
    MakeDueSuite(original, mails_, port);
    std::vector<Trial> trials = {{"mails by " + way, Trial::Kind::Job, [&](const Build& build) {
                                    return JobOnACopy(build, original, port == 0);
                                  }}};
    for (const std::string& loopWay : loopWays) {
      trials.push_back({loopWay, Trial::Kind::Peer, [&, loopWay](const Build&) {
                          const fs::path pickup = work_ / ("loop" + std::to_string(++copies_));
                          fs::create_directory(pickup);
                          return RunMeasured(
                              ORVANE_SHELL_LOOP,
                              {work_.string(), SheetOf(original).string(), std::to_string(shellMails_),
                               loopWay, port == 0 ? pickup.string() : std::to_string(port)});
                        }});
    }
    if (port == 0) AddParts(trials, original);
    const Taken taken = bench_.Take("mail", trials, kRounds);
    const Samples job = Each(taken.Whole("mails by " + way), mails_);
    bench_.Tell("mail by " + way + ", job", "ms a mail", job);
    for (const std::string& loopWay : loopWays) {
      const bool judged = loopWay == "curl" || loopWay == "smtp";
      bench_.Ratio("mail by " + way + ", shell loop (" + loopWay + ") to job",
                   Each(taken.Whole(loopWay), shellMails_), job,
                   judged ? std::optional(AtLeast(kWantedRatio)) : std::nullopt, "ms a mail");
    }
    if (way != "pickup") return;
    for (const char* part : {"rendering", "sending", "statements"}) {
      const bool judged = part == std::string("statements");
      bench_.Ratio("mail by " + way + ", " + part + " alone to job", Each(taken.Own(part), mails_), job,
                   judged ? std::optional(AtMost(kShareOfStatements)) : std::nullopt, "ms a mail");
    }
    const Samples floor = Each(taken.Own("floor"), mails_);
    bench_.Ratio("mail by " + way + ", job to its parts in turns", Each(taken.Own("mails by " + way), mails_),
                 floor, std::nullopt, "ms a mail");
    bench_.Ratio("mail by " + way + ", shell loop (curl) to the parts in turns",
                 Each(taken.Whole("curl"), shellMails_), floor, std::nullopt, "ms a mail");
  }

 private:
  static Samples Each(Samples seconds, int mails) {
    for (double& sample : seconds) sample *= 1000.0 / mails;
    return seconds;
  }

  // Every reminder must have been written back, and its page sent and deleted. The copies stay until the end,
  // as making files right after others were deleted costs more.
  Measured JobOnACopy(const Build& build, const fs::path& original, bool toPickup) {
    const fs::path home = work_ / ("copy" + std::to_string(++copies_)) / "home";
    fs::create_directories(home.parent_path());
    fs::copy(original, home, fs::copy_options::recursive);
    LetFilesSettle();
    const Measured measured = build.Part({"job", home.string(), std::to_string(mails_)});
    SqliteFile database(DatabaseOf(home));
    if (database.Number("SELECT count(*) FROM REMINDER WHERE T2_DATE IS NOT NULL") != mails_) {
      throw std::runtime_error("not every reminder was written back");
    }
    if (FilesIn(home / "Data" / "HTML") != 0)
      throw std::runtime_error("a page was left behind, so a mail was not sent");
    if (toPickup && FilesIn(PickupFolder(home)) != mails_)
      throw std::runtime_error("mails are missing in the pickup folder");
    return measured;
  }

  void AddParts(std::vector<Trial>& trials, const fs::path& original) {
    for (const std::string part : {"rendering", "sending", "statements", "floor"}) {
      trials.push_back({part, Trial::Kind::Peer, [this, &original, part](const Build& build) {
                          const fs::path home = work_ / (part + std::to_string(++copies_));
                          fs::copy(original, home, fs::copy_options::recursive);
                          LetFilesSettle();
                          return build.Part({"part", part, home.string(), std::to_string(mails_)});
                        }});
    }
  }

  Bench& bench_;
  int mails_;
  int shellMails_;
  int copies_ = 0;
  WorkFolder folder_;
  fs::path work_ = folder_.Path();
};

void Measure(Bench& bench) {
  MailBench mail(bench, static_cast<int>(bench.Size(0, 1'000, 200)), static_cast<int>(bench.Size(1, 100, 0)));
  if (bench.Wanted("pickup")) mail.Compare("pickup", 0, {"curl", "synced", "written"});
  for (const auto& [kind, name] :
       {std::pair(MailSink::Kind::Aiosmtpd, "aiosmtpd"), {MailSink::Kind::SmtpSink, "smtp-sink"}}) {
    if (!bench.Wanted(name)) continue;
    if (!MailSink::IsInstalled(kind)) {
      std::printf("%s is not installed\n", name);
      continue;
    }
    const MailSink sink(kind);
    mail.Compare(name, sink.Port(), {"smtp"});
  }
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, {{"job", Pass}, {"part", RunPart}}, Measure);
}
