// Reminder mails with rendered pages, against a shell loop of xsltproc and curl.
//
//   bench_mail [MAILS [SHELL_MAILS]]      1,000 mails by the job and 100 by the loop when nothing is given
//
// The job does everything (reading the rows, building the document, rendering, sending, writing the rows
// back); the loop puts the question's id into a document that is there already, renders and sends. Fails when
// the job makes fewer than 10 times as many mails a second. Sent is to two servers: aiosmtpd, whose own time
// is a part of the job's that no client can save, and smtp-sink, which needs next to none. Into the pickup
// folder the loop sends with curl, which does not sync the mail as the job does; beside it stand the loop
// that syncs, and one that sends nothing and writes into the folder itself.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "bench/mail/mail_parts.hpp"
#include "bench/mail/mail_suite.hpp"
#include "bench/support/bench_suite.hpp"
#include "bench/support/child_process.hpp"
#include "bench/support/sqlite_file.hpp"

namespace {

namespace fs = std::filesystem;
using orvane_bench::MailSink;
using orvane_bench::RunFigures;

constexpr double kWantedRatio = 10;

std::size_t FilesIn(const fs::path& folder) {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder)) ++count;
  return count;
}

// Seconds of the job's whole run. Every reminder must have been written back, and its page sent and deleted.
double JobSeconds(const fs::path& home, int mails) {
  const RunFigures figures =
      orvane_bench::RunMeasured(orvane_bench::ProgramFolder() / "orvane-host",
                                {"run", "--home", home.string(), "--strict", "SolveOnNoResponse"});
  orvane_bench::SqliteFile database(orvane_bench::DatabaseOf(home));
  if (database.Number("SELECT count(*) FROM REMINDER WHERE T2_DATE IS NOT NULL") != mails) {
    throw std::runtime_error("not every reminder was written back");
  }
  if (FilesIn(home / "Data" / "HTML") != 0)
    throw std::runtime_error("a page was left behind, so a mail was not sent");
  return figures.seconds;
}

void WriteLoopInput(const fs::path& work) {
  std::ofstream(work / "document.xml") << orvane_bench::MailDocument();
  std::ofstream body(work / "body");
  for (const char c : orvane_bench::MailBody()) {
    if (c != '\r') body << c;
  }
  std::ofstream parameters(work / "parameters");
  for (const auto& [label, text] : orvane_bench::Captions()) parameters << label << '\t' << text << '\n';
}

struct Rates {
  double job;    // seconds a mail
  double shell;  // seconds a mail
  double send;   // seconds a mail, sending alone
};

void PrintLoop(const char* what, double shell, double job) {
  std::printf("        %s: %.0f mails/s, ratio %.1f\n", what, 1 / shell, shell / job);
}

void Print(const char* way, const Rates& rates, double render, double database) {
  const auto share = [&](double seconds) { return 100 * seconds / rates.job; };
  std::printf("%-9s  job %7.0f mails/s   shell loop %5.0f mails/s   ratio %5.1f\n", way, 1 / rates.job,
              1 / rates.shell, rates.shell / rates.job);
  std::printf(
      "        of %.2f ms a mail: rendering by itself %.0f %%, sending %.0f %%, the statements %.0f %%\n",
      1000 * rates.job, share(render), share(rates.send), share(database));
}

int Run(int mails, int shellMails) {
  const orvane_bench::WorkFolder folder;
  fs::permissions(folder.Path(), static_cast<fs::perms>(0755));
  const fs::path work = folder.Path();
  const fs::path pickupHome = work / "pickup" / "home";
  const fs::path shellPickup = work / "shell-pickup";
  for (const fs::path& made : {pickupHome.parent_path(), shellPickup}) fs::create_directory(made);
  WriteLoopInput(work);
  orvane_bench::MakeDueSuite(pickupHome, mails, 0);
  const fs::path sheet = pickupHome / "Orvane" / "Mail" / "Sheets" / "reminder.xsl";
  const auto shell = [&](const std::string& way, const std::string& target) {
    const RunFigures figures = orvane_bench::RunMeasured(
        ORVANE_SHELL_LOOP, {work.string(), sheet.string(), std::to_string(shellMails), way, target});
    return figures.seconds / shellMails;
  };

  Rates pickup{JobSeconds(pickupHome, mails) / mails, shell("curl", shellPickup.string()), 0};
  const double synced = shell("synced", shellPickup.string());
  const double written = shell("written", shellPickup.string());
  if (FilesIn(orvane_bench::PickupFolder(pickupHome)) != static_cast<std::size_t>(mails)) {
    throw std::runtime_error("mails are missing in the pickup folder");
  }
  const fs::path page = work / "page.htm";
  pickup.send =
      orvane_bench::SendSeconds(
          {.sendUsing = CDO::SendUsing::Pickup, .pickupDirectory = shellPickup.string()}, page, mails) /
      mails;
  const double render = orvane_bench::RenderSeconds(sheet, mails) / mails;
  const double database = orvane_bench::DatabaseSeconds(pickupHome, mails) / mails;
  Print("pickup", pickup, render, database);
  PrintLoop("the loop with each mail synced", synced, pickup.job);
  PrintLoop("the loop without curl", written, pickup.job);
  bool reached = pickup.shell >= kWantedRatio * pickup.job;
  for (const auto& [kind, name] :
       {std::pair(MailSink::Kind::Aiosmtpd, "aiosmtpd"), {MailSink::Kind::SmtpSink, "smtp-sink"}}) {
    if (!MailSink::IsInstalled(kind)) {
      std::printf("%s is not installed\n", name);
      continue;
    }
    const MailSink sink(kind);
    const fs::path home = work / name / "home";
    fs::create_directory(home.parent_path());
    orvane_bench::MakeDueSuite(home, mails, sink.Port());
    Rates smtp{JobSeconds(home, mails) / mails, shell("smtp", std::to_string(sink.Port())), 0};
    smtp.send =
        orvane_bench::SendSeconds(
            {.sendUsing = CDO::SendUsing::Port, .server = "127.0.0.1", .port = sink.Port()}, page, mails) /
        mails;
    Print(name, smtp, render, database);
    reached = reached && smtp.shell >= kWantedRatio * smtp.job;
  }
  if (!reached) std::printf("MISSED: at least %.0f times the shell loop\n", kWantedRatio);
  return reached ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc > 1 ? std::atoi(argv[1]) : 1000, argc > 2 ? std::atoi(argv[2]) : 100);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_mail: %s\n", error.what());
    return 2;
  }
}
