#include "tests/e2e/previewed_suite.hpp"

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "tests/e2e/demo_suite.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

void RunScript(const fs::path& file, const std::string& script) {
  sqlite3* database = nullptr;
  sqlite3_open(file.c_str(), &database);
  sqlite3_busy_timeout(database, 30'000);
  char* message = nullptr;
  const int code = sqlite3_exec(database, script.c_str(), nullptr, nullptr, &message);
  const std::string said = message == nullptr ? "" : message;
  sqlite3_free(message);
  sqlite3_close(database);
  if (code != SQLITE_OK) throw std::runtime_error(script + ": " + said);
}

// The suite that all others are copies of.
fs::path OriginalHome() {
  static const TemporaryFolder folder;
  static const fs::path home = [] {
    fs::path made = folder.Path() / "home";
    MakeDemoSuite(made);
    // A few hundred customers tell as much as ten thousand.
    RunScript(made / "db/orvane.sqlite", "DELETE FROM PROSPECT WHERE PROSPECTID % 50 <> 0; VACUUM");
    return made;
  }();
  return home;
}

std::string Text(const automation::Variant& value) {
  if (value.IsNull()) return "NULL";
  if (value.IsDate()) return std::to_string(std::get<automation::DateTime>(value.Get()).UnixMicroseconds());
  return automation::ToText(value);
}

}  // namespace

const std::vector<std::string>& AllJobs() {
  static const std::vector<std::string> jobs = {"DormantUserExpiry", "SolveOnNoResponse", "CleanUp",
                                                "Archive"};
  return jobs;
}

// A page of a mail is named after the second in which it is made, and replaces one of the same second.
std::vector<std::string> EffectLines(const std::string& text) {
  static const std::regex kPage(R"((/|\\\\)[0-9]+\.htm\b)");
  std::vector<std::string> lines;
  std::map<std::uint64_t, std::string> ops;  // by their numbers in the run
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    auto object = nlohmann::ordered_json::parse(line);
    const std::string op = object["op"];
    ops[object["seq"].get<std::uint64_t>()] = op;
    if (op == "run.start" || op == "run.end") continue;
    if (op.starts_with("file.") && std::regex_search(line, kPage)) continue;
    for (const char* member : {"run", "seq", "time"}) object.erase(member);
    if (op == "failed") object["of"] = ops[object["of"].get<std::uint64_t>()];
    lines.push_back(std::regex_replace(object.dump(), kPage, "$1PAGE.htm"));
  }
  return lines;
}

PreviewedSuite::PreviewedSuite(const std::string& engine) : engine_(engine) {
  fs::copy(OriginalHome(), home_, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  if (engine_ == "sqlite") return;
  tables_ = TablesOf(*OpenFile(OriginalHome() / "db/orvane.sqlite"));
  server_.emplace(engine_, home_, OriginalHome() / "db");
}

void PreviewedSuite::Sql(const std::string& statement) const {
  if (server_) {
    server_->Orvane().Execute(statement);
  } else {
    RunScript(DatabaseFile(), statement);
  }
}

void PreviewedSuite::RefuseRows(const std::string& change, const std::string& table,
                                const std::string& condition) {
  const std::string name = "refusal_" + std::to_string(++refusals_);
  const std::string start = "CREATE TRIGGER " + name + " BEFORE " + change + " ON " + table;
  if (engine_ == "sqlite") {
    Sql(start + " WHEN " + condition + " BEGIN SELECT RAISE(ABORT, 'this row stays'); END");
  } else if (engine_ == "postgresql") {
    Sql("CREATE FUNCTION " + name +
        "() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN RAISE EXCEPTION ''this row stays''; END'");
    Sql(start + " FOR EACH ROW WHEN (" + condition + ") EXECUTE FUNCTION " + name + "()");
  } else {
    Sql(start + " FOR EACH ROW BEGIN IF " + condition +
        " THEN SIGNAL SQLSTATE '45000' SET MESSAGE_TEXT = 'this row stays'; END IF; END");
  }
}

void PreviewedSuite::SetHostKey(const std::string& key, const std::string& value) const {
  const fs::path site = home_ / "config/siteConfiguration.xml";
  std::string text = TemporaryFolder::Read(site);
  const std::string end = "</siteConfiguration>";
  text.insert(text.find(end),
              "<section name=\"HOST\"><key name=\"" + key + "\">" + value + "</key></section>");
  std::ofstream(site, std::ios::binary) << text;
}

void PreviewedSuite::BecomeUnprivileged() {
  if (geteuid() != 0) return;
  const auto giveAway = [](const fs::path& path) {
    if (lchown(path.c_str(), kUnprivilegedId, kUnprivilegedId) != 0) throw std::runtime_error("lchown");
  };
  giveAway(own_.Path());
  giveAway(folder_.Path());
  for (const auto& entry : fs::recursive_directory_iterator(folder_.Path())) giveAway(entry.path());
  unprivileged_ = true;
}

std::vector<std::string> PreviewedSuite::Words(const std::string& command,
                                               const std::vector<std::string>& more) const {
  std::vector<std::string> words = {command, "--home", home_.string()};
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

Outcome PreviewedSuite::Call(const std::vector<std::string>& words) const {
  return unprivileged_ ? RunHostUnprivileged(words, Environment()) : RunHost(words, Environment());
}

Outcome PreviewedSuite::Preview(std::vector<std::string> jobs,
                                const std::vector<std::string>& options) const {
  jobs.insert(jobs.end(), options.begin(), options.end());
  return Call(Words("preview", jobs));
}

Outcome PreviewedSuite::Run(std::vector<std::string> jobs, const std::vector<std::string>& options) const {
  jobs.insert(jobs.end(), options.begin(), options.end());
  return Call(Words("run", jobs));
}

std::string PreviewedSuite::Journals() const {
  std::string text;
  for (const std::string& job : AllJobs()) {
    if (!fs::exists(home_ / "journal")) break;
    for (const auto& entry : fs::directory_iterator(home_ / "journal")) {
      if (entry.path().string().ends_with("-" + job + ".jsonl")) text += TemporaryFolder::Read(entry.path());
    }
  }
  return text;
}

std::map<std::string, std::string> PreviewedSuite::State() const {
  std::map<std::string, std::string> state;
  for (const auto& entry : fs::recursive_directory_iterator(folder_.Path())) {
    struct stat status {};
    lstat(entry.path().c_str(), &status);
    std::string text = std::to_string(status.st_mode);
    if (S_ISREG(status.st_mode)) text += " " + TemporaryFolder::Read(entry.path());
    state[entry.path().lexically_relative(folder_.Path()).string()] = std::move(text);
  }
  if (!server_) return state;
  const auto session = server_->Orvane().Connect();
  for (const std::string& table : tables_) {
    std::vector<std::string> rows;
    for (const auto& row : ValuesOf(*session, table)) {
      std::string& shown = rows.emplace_back();
      for (const automation::Variant& value : row) shown += Text(value) + "|";
    }
    std::sort(rows.begin(), rows.end());
    std::string& text = state["table " + table];
    for (const std::string& row : rows) text += row + "\n";
  }
  return state;
}

std::size_t PreviewedSuite::ExpectThatTheRunDoesWhatThePreviewSays() const {
  const auto before = State();
  const Outcome previewed = Preview(AllJobs());
  ExpectSameState(State(), before);
  EXPECT_TRUE(fs::is_empty(own_.Path()));
  const Outcome ran = Run(AllJobs());
  EXPECT_EQ(previewed.exitCode, ran.exitCode) << previewed.err << ran.err;
  // Jobs that come to their end, or do not; anything else would be no run to compare with.
  EXPECT_THAT(ran.exitCode, testing::AnyOf(0, 69, 70)) << ran.err;
  const std::vector<std::string> lines = EffectLines(previewed.out);
  const std::vector<std::string> done = EffectLines(Journals());
  const auto [previewedLine, doneLine] = std::mismatch(lines.begin(), lines.end(), done.begin(), done.end());
  EXPECT_TRUE(previewedLine == lines.end() && doneLine == done.end())
      << "line " << previewedLine - lines.begin() << " of " << lines.size() << " and " << done.size()
      << "\npreviewed: " << (previewedLine == lines.end() ? "nothing more" : *previewedLine)
      << "\ndone:      " << (doneLine == done.end() ? "nothing more" : *doneLine);
  return lines.size();
}

void ExpectSameState(const std::map<std::string, std::string>& now,
                     const std::map<std::string, std::string>& before) {
  for (const auto& [path, text] : now) {
    const auto was = before.find(path);
    EXPECT_TRUE(was != before.end()) << path << " is new";
    if (was != before.end()) {
      EXPECT_TRUE(was->second == text) << path << " has changed";
    }
  }
  for (const auto& [path, text] : before) EXPECT_TRUE(now.contains(path)) << path << " is gone";
}

}  // namespace orvane_test
