// Installations on the embedded database, and the surroundings of job code in them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/adodb/connection.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_bench {

std::filesystem::path DatabaseOf(const std::filesystem::path& home);

// Writes an installation with empty tables.
void MakeSuite(const std::filesystem::path& home);
// Writes its site configuration alone, on the embedded database or another connection.
void MakeSuiteConfiguration(const std::filesystem::path& home, std::string_view connectionString = {});

// Job code's surroundings in that installation, current for the thread for as long as the object lives.
class BenchSuite {
 public:
  explicit BenchSuite(const std::filesystem::path& home);

 private:
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

// A runtime with the database classes alone, current for the thread; "\" in paths begins at `folder`.
class DatabaseClasses {
 public:
  explicit DatabaseClasses(const std::filesystem::path& folder = "/");

 private:
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

// Opens a connection of job code.
ADODB::ConnectionPtr Connect(const std::string& connectionString);

}  // namespace orvane_bench
