// Prepared statements and their rows.
#pragma once

#include <sqlite3.h>

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/adodb/engine/provider.hpp"

namespace ADODB::sqlite {

struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// A prepared statement with what is known about its columns.
class Prepared {
 public:
  Prepared(sqlite3* database, std::string_view sql);

  void Bind(const engine::Parameters& parameters);
  bool Step();  // false past the last row; raises what the engine says
  void Reset() noexcept;

  // Valid after the first Step; a changed schema is noticed there.
  const std::vector<engine::Column>& Columns();
  automation::Variant Value(std::size_t column) const;

 private:
  sqlite3* database_;
  std::unique_ptr<sqlite3_stmt, FinalizeStatement> statement_;
  std::vector<engine::Column> columns_;
  int describedAt_ = -1;  // number of re-preparations when columns_ were read
};

// The statements of one session that were used last, kept prepared.
class StatementCache {
 public:
  explicit StatementCache(sqlite3* database) : database_(database) {}

  // The statement, out of the cache until it is given back.
  std::unique_ptr<Prepared> Take(std::string_view sql);
  void GiveBack(std::string_view sql, std::unique_ptr<Prepared> statement);

 private:
  struct Entry {
    std::string sql;
    std::unique_ptr<Prepared> statement;
  };
  sqlite3* database_;
  std::list<Entry> entries_;  // the one used last in front
  std::unordered_map<std::string_view, std::list<Entry>::iterator> bySql_;
};

// A result being read; gives its statement back to the cache at the end. The cache must outlive it.
class StatementRows : public engine::Rows {
 public:
  StatementRows(StatementCache& cache, std::string_view sql, const engine::Parameters& parameters);
  ~StatementRows() override;

  const std::vector<engine::Column>& Columns() const override { return statement_->Columns(); }
  bool Next() override;
  automation::Variant Value(std::size_t column) const override { return statement_->Value(column); }

 private:
  StatementCache& cache_;
  std::string sql_;
  std::unique_ptr<Prepared> statement_;
  bool first_ = true;
  bool hasRow_ = false;
};

}  // namespace ADODB::sqlite
