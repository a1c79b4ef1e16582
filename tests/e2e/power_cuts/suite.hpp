// A whole suite as "orvane-host init" makes it, with its database on any engine, on a disk that forgets.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/archive_installation.hpp"
#include "tests/power/tree.hpp"

namespace orvane_test {

class PowerCutSuite {
 public:
  explicit PowerCutSuite(const std::string& engine);

  bool IsEmbedded() const { return embedded_; }
  Engine& Rows() { return *engine_; }
  ArchiveInstallation& Installation() { return installation_; }
  std::filesystem::path Home() const { return installation_.Home(); }
  // What the disk holds: the installation and its logs.
  const std::filesystem::path& Root() const { return installation_.suite.Folder().Path(); }

  void AddPerson(const std::string& id, const std::string& attributes) const;
  // The first commit of a run makes SQLite copy its write-ahead log into the database, as it does every
  // thousand pages: on the disk, that row is ahead of all others then.
  void LengthenLog();
  // The disk as it is now; the write-ahead log is there when LengthenLog was called.
  Tree Disk();
  // What SQLite thinks of its files; empty when it is content.
  std::string DatabaseProblem();

  Outcome Run(const std::string& job, const std::map<std::string, std::string>& environment = {}) const;
  // The same while every change of the disk is written down.
  Outcome RunRecorded(const std::string& job, const std::filesystem::path& log,
                      std::map<std::string, std::string> environment = {}) const;

 private:
  bool embedded_;
  ArchiveInstallation installation_;
  std::unique_ptr<Engine> engine_;
  std::unique_ptr<Engine> catalogue_;  // on a server
  bool longLog_ = false;
};

}  // namespace orvane_test
