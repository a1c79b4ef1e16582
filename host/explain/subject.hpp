// Whom or what an explanation is about: the rows and files that a key stands for.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "components/registration/job_needs.hpp"
#include "platform/adodb/changes.hpp"
#include "platform/adodb/session/provider.hpp"

namespace orvane::host {

struct SubjectRow {
  std::string table;
  ADODB::NamedRow key;  // the primary key; all columns in a table without one
  ADODB::NamedRow row;  // the whole row as it is before the job
};

struct Subject {
  static constexpr std::size_t kMostRows = 1000;
  static constexpr std::size_t kMostFiles = 20;

  std::string key;
  std::vector<SubjectRow> rows;
  bool hasMoreRows = false;  // than are kept
  std::vector<std::string> files;
  std::vector<std::string> notLookedInto;  // tables that could not be read, and why

  bool IsUnknown() const { return rows.empty() && files.empty(); }
};

// The rows of the job's tables that a customer's address, user id or number, a request's number or a file's
// name stands for, and the rows of their requests. Tables that the job only adds to are left out.
Subject FindRows(const std::string& key, const OrvaneProcess::JobNeeds& needs,
                 ADODB::engine::Session& session);

// The files of that name below the folder, whatever the case of its ASCII letters. A folder that cannot be
// read is passed over.
std::vector<std::string> FindFiles(const std::string& name, const std::filesystem::path& folder);

// Whether a table's column is one of those that a key is looked for in.
bool Identifies(std::string_view table, std::string_view column);

// A row's or key's values as one text, the same for equal values.
std::string Joined(const ADODB::NamedRow& row);

}  // namespace orvane::host
