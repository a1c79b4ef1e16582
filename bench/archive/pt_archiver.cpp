#include "bench/archive/archive_bench.hpp"

namespace orvane_bench {
namespace {

const char* const kProgram = "/usr/bin/pt-archiver";

}  // namespace

bool PtArchiverIsInstalled() {
  return std::filesystem::exists(kProgram);
}

double PtArchiverSeconds(const orvane_test::ServerDatabase& database, const std::filesystem::path& folder,
                         bool bulk) {
  const auto text = ADODB::engine::ConnectionString::Parse(database.ConnectionString());
  const auto value = [&](const char* keyword) { return text.Value(keyword).value_or(""); };
  double seconds = 0;
  for (const std::string table : {"transactions", "questionhistory"}) {
    std::vector<std::string> arguments = {"--source",
                                          "h=" + value("Server") + ",P=" + value("Port") +
                                              ",u=" + value("UID") + ",p=" + value("PWD") +
                                              ",D=" + value("Database") + ",t=" + table,
                                          "--file",
                                          (folder / (table + (bulk ? ".bulk" : ".single"))).string(),
                                          "--where",
                                          "1=1",
                                          "--limit",
                                          "1000",
                                          "--no-check-charset",
                                          "--no-version-check"};
    if (bulk) {
      arguments.insert(arguments.end(), {"--bulk-delete", "--commit-each"});
    } else {
      arguments.insert(arguments.end(), {"--txn-size", "1"});
    }
    seconds += RunMeasured(kProgram, arguments).seconds;
  }
  return seconds;
}

}  // namespace orvane_bench
