// A pass over many reminder rows, against a walk over the same rows that does nothing with them.
//
//   bench_solve [ROWS [DUE]]      1,000,000 rows of which 1,000 are due when nothing is given
//
// The due rows are reminded: read, mailed as plain text into the pickup folder, written back.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/product/bench_suite.hpp"
#include "bench/product/job_run.hpp"
#include "bench/support/bench.hpp"
#include "bench/support/part.hpp"
#include "bench/support/sqlite_file.hpp"
#include "bench/support/work_folder.hpp"
#include "platform/adodb/recordset.hpp"

namespace {

using namespace orvane_bench;
namespace fs = std::filesystem;

constexpr double kAllowedRatio = 2;
constexpr double kAllowedMebibytes = 128;
constexpr int kRounds = 5;

using Words = std::vector<std::string>;

void Fill(const fs::path& home, std::int64_t rows, std::int64_t due) {
  RunMeasured(ProgramFolder() / "orvane-host", {"init", home.string()});
  const std::string count = std::to_string(rows);
  const std::string step = due == 0 ? "0" : std::to_string(rows / due);
  const std::string isDue = due == 0 ? "0" : "i % " + step + " = 0";
  const std::string numbers =
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + count + ") ";
  SqliteFile database(DatabaseOf(home));
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

// "walk HOME ROWS": what the pass does to every row that is not due, without the pass around it.
void Walk(const Words& words) {
  const BenchSuite suite(words.at(0));
  std::int64_t seen = 0;
  Timed(std::stoll(words.at(1)), [&] {
    const auto connection = Connect("Provider=SQLite;Data Source=" + DatabaseOf(words.at(0)).string());
    const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    rows->Open("SELECT * FROM REMINDER WHERE R_STATUS= 150", connection, ADODB::CursorType::Dynamic,
               ADODB::LockType::Optimistic, ADODB::kOptionsUnspecified);
    const ADODB::Field& id = rows->Fields().Item("Q_ID");
    std::int64_t sum = 0;
    for (; !rows->Eof(); rows->MoveNext(), ++seen) sum += automation::ToInt32(id.Value());
    if (sum == 0) throw std::runtime_error("no rows were read");
    rows->Close();
    connection->Close();
  });
  if (seen != std::stoll(words.at(1))) throw std::runtime_error("the walk missed rows");
}

// "pass HOME ROWS"
void Pass(const Words& words) {
  Timed(std::stoll(words.at(1)), [&] { RunJob(words.at(0), "SolveOnNoResponse"); });
}

void Measure(Bench& bench) {
  const std::int64_t rows = bench.Size(0, 1'000'000, 20'000);
  const std::int64_t due = bench.Size(1, 1'000, 100);
  const WorkFolder folder;
  const fs::path quiet = folder.Path() / "quiet" / "home";
  const fs::path busy = folder.Path() / "busy" / "home";
  for (const auto& [home, count] : {std::pair(quiet, std::int64_t{0}), std::pair(busy, due)}) {
    fs::create_directories(home.parent_path());
    Fill(home, rows, count);
    AddCustomer(home);
  }
  // Nothing is deleted before the last round: on ext4 without a journal the kernel looks at every inode that
  // was freed a moment ago each time a file is made, and would charge the mails of one round for those
  // before.
  int copies = 0;
  const auto pass = [&](const char* name, const fs::path& original, std::int64_t dueRows) {
    return Trial{
        name, Trial::Kind::Job, [&, original, dueRows](const Build& build) {
          const fs::path home = folder.Path() / ("copy" + std::to_string(++copies)) / "home";
          fs::create_directories(home.parent_path());
          fs::copy(original, home, fs::copy_options::recursive);
          LetFilesSettle();
          const Measured measured = build.Part({"pass", home.string(), std::to_string(rows)});
          const auto mails =
              std::distance(fs::directory_iterator(home / "mail" / "pickup"), fs::directory_iterator());
          SqliteFile database(DatabaseOf(home));
          if (database.Number("SELECT count(*) FROM REMINDER WHERE T2_DATE IS NOT NULL") != dueRows ||
              mails != dueRows) {
            throw std::runtime_error("not every due row was reminded");
          }
          database.Execute("DROP TABLE REMINDER; VACUUM");  // most of the space
          return measured;
        }};
  };
  const Trial walk{"walk", Trial::Kind::Peer, [&](const Build& build) {
                     return build.Part({"walk", quiet.string(), std::to_string(rows)});
                   }};
  const std::string name = "solve on no response, " + std::to_string(rows) + " rows";
  const std::string busyName = "pass with " + std::to_string(due) + " due";
  const Taken taken = bench.Take(
      name, {walk, pass("pass with none due", quiet, 0), pass(busyName.c_str(), busy, due)}, kRounds);
  bench.Tell(name + ", walk", "s", taken.Own("walk"));
  bench.Ratio(name + ", pass with none due to the walk", taken.Own("pass with none due"), taken.Own("walk"),
              AtMost(kAllowedRatio));
  bench.Ratio(name + ", " + busyName + ", to the walk", taken.Own(busyName), taken.Own("walk"),
              AtMost(kAllowedRatio));
  bench.Limit(name + ", peak memory", "MiB", taken.Peak(busyName), AtMost(kAllowedMebibytes));
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, {{"walk", Walk}, {"pass", Pass}}, Measure);
}
