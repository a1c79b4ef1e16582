// A suite around one clean-up run, with a file-handling component that remembers.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jobs/cleanup/clean_up.hpp"
#include "tests/doubles/fake_file_handling.hpp"
#include "tests/support/run_test.hpp"

namespace orvane_test {

class CleanUpTest : public RunTest {
 protected:
  static constexpr std::string_view kRunLog = "/suite/OrvLog/OrvCleanUpSvc_log_2004_7_26.txt";
  static constexpr std::string_view kStartBanner =
      "*****************************************************\r\n"
      "Orvane NTService Log \r\n"
      "*****************************************************\r\n"
      "Clean Up - NTService Started at : 7-26-2004 09:05:03\r\n";
  static constexpr std::string_view kStopLine =
      " NTService Stopped at : 7-26-2004 09:05:03\r\n"
      "*****************************************************\r\n";

  // The tables, and the parameters DataFileRelativePath = Data, KeepTemporaryFiles = 24, FTPPath =
  // ftp://farm; no web farm.
  CleanUpTest();

  void SetParameter(std::string_view name, std::string_view value);
  void RemoveParameter(std::string_view name);
  void OnAWebFarm() { SetParameter("Webfarm Implemented", "True"); }

  // A run as the service host makes it.
  void Run();
  // A run in which the time of files and folders can be had.
  void RunWithAges();

  // Below the data root; `accessed` counts back from the run's start.
  void AddFile(std::string_view name, int minutesAgo = 60);
  void AddFolder(std::string_view name);
  bool Exists(std::string_view name) const;
  // What is below the data root, in order.
  std::vector<std::string> Data() const;

  void AddQuestion(int id, int status, std::string_view date);
  void AddDataFile(int id, std::string_view name, int type, std::string_view upload);
  void AddSession(std::string_view id);
  std::vector<std::string> Questions();
  std::vector<std::string> DataFiles();

  // The messages in the suite's error log.
  std::vector<std::string> Messages() const;
  std::string RunLog() const { return disk_->Bytes(kRunLog); }
  // The statements that changed something, in order.
  const std::vector<std::string>& Executed() const { return environment_.adodb->executed; }

  std::shared_ptr<FileHandlingState> farm_ = std::make_shared<FileHandlingState>();
};

// What every sweep that tests ages reports under its source.
inline std::string ObjectRequired(const std::string& source) {
  return source + " caught: Object required (424). Additional information: Object required";
}

}  // namespace orvane_test
