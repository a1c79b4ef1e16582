// Puts rows that a journal holds back into a database.
#pragma once

#include <map>
#include <stdexcept>
#include <string>

#include "host/restore/archived_rows.hpp"
#include "platform/adodb/session/provider.hpp"
#include "platform/automation/variant.hpp"

namespace orvane::host {

// A row cannot be put back; what() says which and why.
class CannotInsert : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Works in whatever transaction the session has open.
class RowInsertion {
 public:
  explicit RowInsertion(ADODB::engine::Session& session);
  ~RowInsertion();

  // Whether a row with that key is in the table; of a table without a key, whether it has one of that
  // request. FAILS: automation::Error; CannotInsert for a key that the table has no columns for.
  bool IsThere(const ArchivedRow& row);

  // FAILS: automation::Error; CannotInsert for a column that the table does not have.
  void Insert(const ArchivedRow& row);

 private:
  struct Table;
  struct Prepared;

  Table& TableNamed(const std::string& name);
  Prepared& PreparedFor(const std::string& sql);

  ADODB::engine::Session& session_;
  std::map<std::string, Table> tables_;
  std::map<std::string, Prepared> prepared_;
};

// "Q_ID 17"
std::string KeyText(const ArchivedRow& row);

}  // namespace orvane::host
