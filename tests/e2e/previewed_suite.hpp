// A small demo suite on any engine, whose previews are held against the runs that follow.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/host_process.hpp"
#include "tests/e2e/suite_on_server.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {

// In the order in which previews and runs of all of them are asked for.
const std::vector<std::string>& AllJobs();

// The lines of a preview, or of journals, without what may differ: the first and the last line, the run, its
// moments, and the pages of mails, which are named after the second in which they are made.
std::vector<std::string> EffectLines(const std::string& text);

class PreviewedSuite {
 public:
  // With some two hundred customers. `engine` is "sqlite", "postgresql" or "mariadb".
  explicit PreviewedSuite(const std::string& engine);

  const std::string& Engine() const { return engine_; }
  const std::filesystem::path& Folder() const { return folder_.Path(); }
  const std::filesystem::path& Home() const { return home_; }
  // Where previews keep files of their own.
  const std::filesystem::path& OwnFolder() const { return own_.Path(); }
  std::filesystem::path DatabaseFile() const { return home_ / "db/orvane.sqlite"; }
  // REQUIRES: not the embedded engine.
  const SuiteOnServer& Server() const { return *server_; }

  // A statement that every engine understands, by the database's owner.
  void Sql(const std::string& statement) const;
  // From now on the database refuses to change the rows of a table that meet a condition, in which a column
  // is "OLD.column"; `change` is "DELETE" or "UPDATE".
  void RefuseRows(const std::string& change, const std::string& table, const std::string& condition);
  // A key of the site configuration's section HOST.
  void SetHostKey(const std::string& key, const std::string& value) const;
  // Gives all files away to a user for whom permissions count, who then runs the host.
  void BecomeUnprivileged();

  Outcome Preview(std::vector<std::string> jobs, const std::vector<std::string>& options = {"--json"}) const;
  Outcome Run(std::vector<std::string> jobs, const std::vector<std::string>& options = {}) const;
  // The words and the environment of such a call, for a program that is let run.
  std::vector<std::string> Words(const std::string& command, const std::vector<std::string>& more) const;
  std::map<std::string, std::string> Environment() const { return {{"TMPDIR", own_.Path().string()}}; }

  // The journals of all jobs, in their order; one each.
  std::string Journals() const;

  // Every file and folder with its kind, rights and bytes; on a server the rows of every table as well.
  std::map<std::string, std::string> State() const;

  // Previews all jobs, which must change nothing, runs them, and compares the lines. Gives how many there
  // were.
  std::size_t ExpectThatTheRunDoesWhatThePreviewSays() const;

 private:
  Outcome Call(const std::vector<std::string>& words) const;

  const std::string engine_;
  TemporaryFolder own_;
  TemporaryFolder folder_;
  const std::filesystem::path home_ = folder_.Path() / "home";
  std::optional<SuiteOnServer> server_;
  std::vector<std::string> tables_;
  bool unprivileged_ = false;
  int refusals_ = 0;
};

void ExpectSameState(const std::map<std::string, std::string>& now,
                     const std::map<std::string, std::string>& before);

}  // namespace orvane_test
