#include "tests/e2e/power_cuts/suite.hpp"

#include <stdexcept>
#include <utility>

namespace orvane_test {

namespace fs = std::filesystem;

PowerCutSuite::PowerCutSuite(const std::string& engine) : embedded_(engine == "sqlite") {
  const HandMadeSuite& suite = installation_.suite;
  fs::remove_all(suite.Home());
  std::vector<std::string> words{"init", suite.Home().string()};
  engine_ = MakeEngine(engine, suite, Tables::None);
  if (!embedded_) {
    catalogue_ = MakeEngine(engine, suite, Tables::None);
    words.insert(words.end(),
                 {"--database", engine_->ConnectionString(), "--catalog", catalogue_->ConnectionString()});
  }
  const Outcome made = RunHost(words);
  if (made.exitCode != 0) throw std::runtime_error(made.err);
}

void PowerCutSuite::AddPerson(const std::string& id, const std::string& attributes) const {
  const std::string name = "home/config/directory.ldif";
  const std::string directory = TemporaryFolder::Read(Root() / name);
  installation_.suite.Folder().Write(name, directory + "\ndn: uid=" + id + "\nuid: " + id + "\nsn: " + id +
                                               "\n" + "orvaneLanguageID: 1033\norvaneLocale: 1033\n" +
                                               attributes);
}

void PowerCutSuite::LengthenLog() {
  // Small pages: the log is copied with the disk again and again.
  Rows().Execute(
      "pragma journal_mode = delete; pragma page_size = 512; vacuum; pragma journal_mode = wal;"
      "create table PADDING (N integer); insert into PADDING values (0)");
  longLog_ = true;
}

Tree PowerCutSuite::Disk() {
  if (!longLog_) return ReadTree(Root());
  Database database(installation_.suite.DatabaseFile());
  database.Execute("pragma synchronous = off; pragma wal_autocheckpoint = 0");
  for (int page = 0; page < 1000; ++page) database.Execute("update PADDING set N = N + 1");
  return ReadTree(Root());  // before the database is closed, which puts the log away
}

std::string PowerCutSuite::DatabaseProblem() {
  if (!embedded_) return {};
  const std::vector<std::string> answer = Rows().Column("pragma integrity_check");
  return answer == std::vector<std::string>{"ok"} ? "" : answer.empty() ? "no answer" : answer.front();
}

Outcome PowerCutSuite::Run(const std::string& job,
                           const std::map<std::string, std::string>& environment) const {
  return RunHost({"run", "--home", Home().string(), job}, environment);
}

Outcome PowerCutSuite::RunRecorded(const std::string& job, const fs::path& log,
                                   std::map<std::string, std::string> environment) const {
  environment["LD_PRELOAD"] = std::string(ORVANE_FAULT_POINTS) + ":" + ORVANE_CHANGE_LOG;
  environment["CHANGE_LOG"] = log.string();
  environment["CHANGE_DEVICE"] = Root().string();
  return Run(job, environment);
}

}  // namespace orvane_test
