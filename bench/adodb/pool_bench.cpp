// Opening, asking one thing and closing, as every small procedure of the jobs does, against the bare prepared
// query; and opening and closing through the pool against doing it with the library.
#include <cstddef>
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
#include "platform/adodb/recordset.hpp"

namespace {

using namespace orvane_bench;

constexpr int kRounds = 9;
constexpr std::int64_t kCalls = 10'000;
constexpr std::int64_t kWarmingCalls = 500;
constexpr double kAllowedRead = 2;
constexpr double kAllowedOpening = 0.1;

using Words = std::vector<std::string>;

void RequireRead(std::size_t length, std::int64_t calls) {
  if (length != 2 * static_cast<std::size_t>(calls)) throw std::runtime_error("wrong value");
}

void ReadBare(const Words& words) {
  SqliteFile database(words.at(0));
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(database.Handle(),
                     "select PARAM_VALUE from PARAMETERS where PARAM_NAME = 'ArchiveAfter'", -1, &statement,
                     nullptr);
  const auto read = [&](std::int64_t calls) {
    std::size_t length = 0;
    for (std::int64_t i = 0; i < calls; ++i) {
      if (sqlite3_step(statement) == SQLITE_ROW)
        length += static_cast<std::size_t>(sqlite3_column_bytes(statement, 0));
      sqlite3_reset(statement);
    }
    RequireRead(length, calls);
  };
  const std::int64_t calls = std::stoll(words.at(1));
  read(kWarmingCalls);
  TimedOnProcessor(calls, [&] { read(calls); });
  sqlite3_finalize(statement);
}

ADODB::ConnectionPtr ConnectTo(const std::string& file) {
  return Connect("Provider=SQLite;Data Source=" + file);
}

void ReadThroughPlatform(const Words& words) {
  const DatabaseClasses classes;
  const auto read = [&](std::int64_t calls) {
    std::size_t length = 0;
    for (std::int64_t i = 0; i < calls; ++i) {
      const auto connection = ConnectTo(words.at(0));
      connection->SetIsolationLevel(ADODB::IsolationLevel::ReadCommitted);
      ADODB::Statement sql = "select PARAM_VALUE from PARAMETERS where PARAM_NAME = '";
      sql += ADODB::SqlValue("ArchiveAfter");
      sql += "'";
      const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
      rows->Open(sql, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
                 ADODB::kCommandText);
      if (!rows->Eof()) length += automation::ToText(rows->Value("PARAM_VALUE")).size();
      rows->Close();
      connection->Close();
    }
    RequireRead(length, calls);
  };
  const std::int64_t calls = std::stoll(words.at(1));
  read(kWarmingCalls);
  TimedOnProcessor(calls, [&] { read(calls); });
}

void OpenPhysical(const Words& words) {
  const std::int64_t calls = std::stoll(words.at(1));
  TimedOnProcessor(calls, [&] {
    for (std::int64_t i = 0; i < calls; ++i) SqliteFile(words.at(0)).Execute("PRAGMA synchronous = NORMAL");
  });
}

void OpenPooled(const Words& words) {
  const DatabaseClasses classes;
  const auto open = [&](std::int64_t calls) {
    for (std::int64_t i = 0; i < calls; ++i) ConnectTo(words.at(0))->Close();
  };
  const std::int64_t calls = std::stoll(words.at(1));
  open(kWarmingCalls);
  TimedOnProcessor(calls, [&] { open(calls); });
}

void Measure(Bench& bench) {
  const WorkFolder folder;
  const std::string file = folder.Path() / "bench.sqlite";
  SqliteFile(file).Execute(
      "PRAGMA journal_mode = WAL;"
      "CREATE TABLE PARAMETERS(PARAM_NAME VARCHAR(50) PRIMARY KEY, PARAM_VALUE VARCHAR(255));"
      "INSERT INTO PARAMETERS VALUES('MAXDORMANCYTIME','30'),('ArchiveAfter','90'),('FTPPath','')");
  const SqliteFile keptOpen(file);  // the last to leave would clear the log away each time
  const std::string calls = std::to_string(bench.Size(0, kCalls, kCalls));
  const auto part = [&](const char* name, Trial::Kind kind, const char* verb) {
    return Trial{name, kind, [&, verb](const Build& build) { return build.Part({verb, file, calls}); }};
  };
  const std::string name = "connections, " + calls + " calls";
  const Taken taken = bench.Take(
      name,
      {part("read", Trial::Kind::Job, "read"), part("bare read", Trial::Kind::Peer, "bare"),
       part("open", Trial::Kind::Job, "open"), part("physical open", Trial::Kind::Peer, "physical")},
      kRounds);
  bench.Ratio(name + ", open, read one parameter, close, to the bare read", taken.Own("read"),
              taken.Own("bare read"), AtMost(kAllowedRead));
  bench.Ratio(name + ", open and close, to a physical connection", taken.Own("open"),
              taken.Own("physical open"), AtMost(kAllowedOpening));
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(
      argc, argv,
      {{"read", ReadThroughPlatform}, {"bare", ReadBare}, {"open", OpenPooled}, {"physical", OpenPhysical}},
      Measure);
}
