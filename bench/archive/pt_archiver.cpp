#include <stdexcept>
#include <string>
#include <vector>

#include "bench/archive/archive_bench.hpp"

namespace orvane_bench {
namespace {

const char* const kProgram = "/usr/bin/pt-archiver";

// The rows that the job would move.
const std::string kClosed = "ENDSTATUSTIME + interval 30 day < now()";

std::string Condition(const std::string& table) {
  return table == "questionhistory" ? kClosed
                                    : "Q_ID in (select Q_ID from QUESTIONHISTORY where " + kClosed + ")";
}

}  // namespace

bool PtArchiverIsInstalled() {
  return std::filesystem::exists(kProgram);
}

Measured RunPtArchiver(const BenchDatabase& database, const std::filesystem::path& folder,
                       PtArchiverWay way) {
  const auto value = [&](const char* keyword) { return database.Setting(keyword); };
  const auto rowsOf = [&](const std::string& table) {
    return database.Number("select count(*) from " + table);
  };
  Measured all;
  for (const std::string table : {"transactions", "questionhistory"}) {
    std::vector<std::string> arguments = {
        "--source",
        "h=" + value("Server") + ",P=" + value("Port") + ",u=" + value("UID") + ",p=" + value("PWD") +
            ",D=" + value("Database") + ",t=" + table,
        "--file", (folder / table).string(), "--where", Condition(table), "--limit", "1000",
        // Otherwise it keeps the row with the highest number.
        "--no-safe-auto-increment", "--no-check-charset", "--no-version-check"};
    if (way.bulk) {
      arguments.insert(arguments.end(), {"--bulk-delete", "--commit-each"});
    } else {
      arguments.insert(arguments.end(), {"--txn-size", "1"});
    }
    if (way.longestSeconds > 0) {
      arguments.insert(arguments.end(), {"--run-time", std::to_string(way.longestSeconds)});
    }
    std::filesystem::remove(folder / table);
    const std::int64_t before = rowsOf(table);
    const double seconds = RunMeasured(kProgram, arguments).seconds;
    const std::int64_t moved = before - rowsOf(table);
    if (moved <= 0) throw std::runtime_error("pt-archiver moved nothing");
    all.seconds += seconds * static_cast<double>(before) / static_cast<double>(moved);
  }
  all.ownSeconds = all.seconds;
  return all;
}

}  // namespace orvane_bench
