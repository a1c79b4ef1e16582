#include <stdexcept>

#include "bench/archive/archive_bench.hpp"

namespace orvane_bench {
namespace {

const char* const kProgram = "/usr/bin/pt-archiver";

// The rows that the job would move.
const std::string kClosed = "ENDSTATUSTIME + interval 30 day < now()";

std::string Condition(const std::string& table, bool selecting) {
  if (!selecting) return "1=1";
  return table == "questionhistory" ? kClosed
                                    : "Q_ID in (select Q_ID from QUESTIONHISTORY where " + kClosed + ")";
}

}  // namespace

bool PtArchiverIsInstalled() {
  return std::filesystem::exists(kProgram);
}

PtArchiverFigures RunPtArchiver(const orvane_test::ServerDatabase& database,
                                const std::filesystem::path& folder, PtArchiverWay way) {
  const auto text = ADODB::engine::ConnectionString::Parse(database.ConnectionString());
  const auto value = [&](const char* keyword) { return text.Value(keyword).value_or(""); };
  const auto rowsOf = [&](const std::string& table) {
    const auto session = database.Connect();
    const auto rows = session->Query("select count(*) from " + table, {});
    return rows->Next() ? automation::ToInt64(rows->Value(0)) : 0;
  };
  PtArchiverFigures figures;
  for (const std::string table : {"transactions", "questionhistory"}) {
    std::vector<std::string> arguments = {
        "--source",
        "h=" + value("Server") + ",P=" + value("Port") + ",u=" + value("UID") + ",p=" + value("PWD") +
            ",D=" + value("Database") + ",t=" + table,
        "--file", (folder / table).string(), "--where", Condition(table, way.selecting), "--limit", "1000",
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
    figures.rows += before;
    figures.rowsMoved += moved;
    figures.secondsMeasured += seconds;
    figures.seconds += seconds * static_cast<double>(before) / static_cast<double>(moved);
  }
  return figures;
}

}  // namespace orvane_bench
