// The deletion of many never-submitted questions as one text: its cost must grow with the number of terms, no
// faster.
//
//   adodb_or_chain_bench [TERMS]     50,000 terms against a tenth of them unless given
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/product/bench_suite.hpp"
#include "bench/support/bench.hpp"
#include "bench/support/part.hpp"
#include "bench/support/sqlite_file.hpp"
#include "bench/support/work_folder.hpp"

namespace {

using namespace orvane_bench;

constexpr int kRounds = 7;
constexpr double kAllowedGrowth = 15;

void Delete(const std::vector<std::string>& words) {
  const std::int64_t terms = std::stoll(words.at(1));
  ADODB::Statement sql = "DELETE FROM DATAFILES WHERE ";
  for (std::int64_t id = 1; id <= terms; ++id) {
    sql += " (ID1 = ";
    sql += ADODB::SqlValue(static_cast<std::int32_t>(id));
    sql += " AND FILETYPE =";
    sql += "1";
    sql += ") or ";
  }
  sql.CutLast(3);
  const DatabaseClasses classes;
  const auto connection = Connect("Provider=SQLite;Data Source=" + words.at(0));
  std::int64_t affected = 0;
  Timed(terms, [&] { connection->Execute(sql, &affected, ADODB::kExecuteNoRecords); });
  if (affected != terms / 2) throw std::runtime_error("wrong rows: " + std::to_string(affected));
}

void Measure(Bench& bench) {
  const WorkFolder folder;
  const std::string file = folder.Path() / "bench.sqlite";
  const auto deletion = [&](std::int64_t terms) {
    return Trial{std::to_string(terms) + " terms", Trial::Kind::Job, [&file, terms](const Build& build) {
                   const std::string count = std::to_string(terms);
                   SqliteFile(file).Execute(
                       "PRAGMA journal_mode = WAL; DROP TABLE IF EXISTS DATAFILES;"
                       "CREATE TABLE DATAFILES(ID1 INTEGER, FILENAME VARCHAR(100), FILETYPE INTEGER);"
                       "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                       count + ") INSERT INTO DATAFILES SELECT i, 'f' || i, 1 + i % 2 * 2 FROM n");
                   return build.Part({"delete", file, count});
                 }};
  };
  const std::int64_t terms = bench.Size(0, 50'000, 5'000);
  const Trial large = deletion(terms);
  const Trial tenth = deletion(terms / 10);
  const Taken taken = bench.Take("or chain", {tenth, large}, kRounds);
  bench.Ratio("or chain, " + large.name + " to a tenth", taken.Own(large.name), taken.Own(tenth.name),
              AtMost(kAllowedGrowth));
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, {{"delete", Delete}}, Measure);
}
