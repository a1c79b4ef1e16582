// A pass over many reminder rows, against a walk over the same rows that does nothing with them.
//
//   bench_solve [ROWS [DUE]]      1,000,000 rows of which 1,000 are due when nothing is given
//
// The due rows are reminded: read, mailed as plain text into the pickup folder, written back. Fails when the
// pass takes more than twice as long as the walk, or holds more than 128 MiB.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/bench_suite.hpp"
#include "bench/support/child_process.hpp"
#include "bench/support/sqlite_file.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/runtime.hpp"

namespace {

using orvane_bench::RunFigures;
using orvane_bench::SqliteFile;
namespace fs = std::filesystem;

constexpr double kAllowedRatio = 2;
constexpr double kAllowedMebibytes = 128;
constexpr int kRounds = 3;

void Fill(const fs::path& home, std::int64_t rows, std::int64_t due) {
  orvane_bench::RunMeasured(orvane_bench::ProgramFolder() / "orvane-host", {"init", home.string()});
  const std::string count = std::to_string(rows);
  const std::string step = due == 0 ? "0" : std::to_string(rows / due);
  const std::string isDue = due == 0 ? "0" : "i % " + step + " = 0";
  const std::string numbers =
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + count + ") ";
  SqliteFile database(orvane_bench::DatabaseOf(home));
  database.Execute(
      "BEGIN; UPDATE EMAIL SET Mail_HTML_File = 0;" + numbers +
      "INSERT INTO REMINDER (Q_ID, T1_DATE, T2_DATE, R_STATUS) SELECT i, CASE WHEN " + isDue +
      " THEN '2004-07-20 00:00:00' ELSE '2999-01-01 00:00:00' END, NULL, 150 FROM n;" + numbers +
      "INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_ORIGINATOR, PROSPECT) SELECT i, 150, 'jdoe', 0 FROM n "
      "WHERE " +
      isDue + "; COMMIT; PRAGMA wal_checkpoint(TRUNCATE);");
}

void AddCustomer(const fs::path& home) {
  std::FILE* file = std::fopen((home / "config" / "directory.ldif").c_str(), "a");
  if (file == nullptr) throw std::runtime_error("no directory file");
  std::fputs(
      "\ndn: uid=jdoe\nobjectClass: inetOrgPerson\nuid: jdoe\ncn: Jane Doe\ngivenName: Jane\nsn: Doe\n"
      "mail: jdoe@example.org\norvaneLanguageID: 1033\n",
      file);
  std::fclose(file);
}

// What the pass does to every row that is not due, without the pass around it.
int Walk(const fs::path& home) {
  const orvane_bench::BenchSuite suite(home);
  const auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  connection->Open("Provider=SQLite;Data Source=" + orvane_bench::DatabaseOf(home).string(), "", "",
                   ADODB::kOptionsUnspecified);
  const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  rows->Open("SELECT * FROM REMINDER WHERE R_STATUS= 150", connection, ADODB::CursorType::Dynamic,
             ADODB::LockType::Optimistic, ADODB::kOptionsUnspecified);
  const ADODB::Field& id = rows->Fields().Item("Q_ID");
  std::int64_t sum = 0;
  for (; !rows->Eof(); rows->MoveNext()) sum += automation::ToInt32(id.Value());
  std::printf("%lld\n", static_cast<long long>(sum));
  rows->Close();
  connection->Close();
  return 0;
}

RunFigures MeasurePass(const fs::path& original, const fs::path& home, std::int64_t due) {
  fs::create_directories(home.parent_path());
  fs::copy(original, home, fs::copy_options::recursive);
  const RunFigures figures =
      orvane_bench::RunMeasured(orvane_bench::ProgramFolder() / "orvane-host",
                                {"run", "--home", home.string(), "--strict", "SolveOnNoResponse"});
  SqliteFile database(orvane_bench::DatabaseOf(home));
  const auto mails =
      std::distance(fs::directory_iterator(home / "mail" / "pickup"), fs::directory_iterator());
  if (database.Number("SELECT count(*) FROM REMINDER WHERE T2_DATE IS NOT NULL") != due || mails != due) {
    throw std::runtime_error("not every due row was reminded");
  }
  return figures;
}

bool Compare(std::int64_t rows, std::int64_t due) {
  const orvane_bench::WorkFolder folder;
  const fs::path quiet = folder.Path() / "quiet" / "home";
  const fs::path busy = folder.Path() / "busy" / "home";
  for (const auto& [home, count] : {std::pair(quiet, std::int64_t{0}), std::pair(busy, due)}) {
    fs::create_directories(home.parent_path());
    Fill(home, rows, count);
    AddCustomer(home);
  }
  RunFigures walk{1e9, 0};
  RunFigures idle{1e9, 0};
  RunFigures pass{1e9, 0};
  const auto take = [](RunFigures& best, const RunFigures& figures) {
    best.seconds = std::min(best.seconds, figures.seconds);
    best.peakMebibytes = std::max(best.peakMebibytes, figures.peakMebibytes);
  };
  for (int round = 0; round < kRounds; ++round) {
    take(walk, orvane_bench::RunMeasured(orvane_bench::ProgramFolder() / "bench_solve",
                                         {"--walk", quiet.string()}));
    // Nothing is deleted before the last round: on ext4 without a journal the kernel looks at every inode
    // that was freed a moment ago each time a file is made, and would charge the mails of one round for those
    // before.
    const std::string number = std::to_string(round);
    take(idle, MeasurePass(quiet, folder.Path() / ("quiet" + number) / "home", 0));
    take(pass, MeasurePass(busy, folder.Path() / ("busy" + number) / "home", due));
  }
  const double ratio = pass.seconds / walk.seconds;
  std::printf(
      "solve on no response, %lld rows: walk %.2f s; pass with none due %.2f s; with %lld due %.2f s, ratio "
      "%.2f (at "
      "most %.1f); peak memory %.1f MiB (at most %.0f)\n",
      static_cast<long long>(rows), walk.seconds, idle.seconds, static_cast<long long>(due), pass.seconds,
      ratio, kAllowedRatio, pass.peakMebibytes, kAllowedMebibytes);
  return ratio <= kAllowedRatio && pass.peakMebibytes <= kAllowedMebibytes;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == "--walk") return Walk(arguments[1]);
    const std::int64_t rows = arguments.empty() ? 1'000'000 : std::atoll(arguments[0].c_str());
    const std::int64_t due = arguments.size() < 2 ? 1'000 : std::atoll(arguments[1].c_str());
    return Compare(rows, due) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_solve: %s\n", error.what());
    return 70;
  }
}
