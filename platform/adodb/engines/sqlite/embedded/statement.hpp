// Prepared statements and their rows.
#pragma once

#include <sqlite3.h>

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/adodb/session/provider.hpp"

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
  const std::shared_ptr<const std::vector<engine::Column>>& Columns();
  void Read(std::size_t column, automation::Variant& into) const;

 private:
  sqlite3* database_;
  std::unique_ptr<sqlite3_stmt, FinalizeStatement> statement_;
  std::shared_ptr<const std::vector<engine::Column>> columns_;
  bool running_ = false;
  std::vector<std::string> kept_;  // the texts that are bound
  bool holdsMuch_ = false;         // one of them is large
  int describedAt_ = -1;           // number of re-preparations when columns_ were read
};

// The statements of one session that were used last, kept prepared.
class StatementCache {
 public:
  explicit StatementCache(sqlite3* database) : database_(database) {}

  struct Entry {
    std::string sql;
    std::unique_ptr<Prepared> statement;
    bool inUse = false;
  };

  // A prepared statement for one user; it goes back when the lease ends. The cache must outlive the lease.
  class Lease {
   public:
    Lease(StatementCache& cache, std::string_view sql);
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    Prepared& operator*() const { return *statement_; }
    Prepared* operator->() const { return statement_; }

   private:
    Prepared* statement_;
    Entry* entry_ = nullptr;  // of the cache; null for a statement of the lease's own
    std::unique_ptr<Prepared> own_;
  };

 private:
  sqlite3* database_;
  std::list<Entry> entries_;  // the one used last in front
  std::unordered_map<std::string_view, std::list<Entry>::iterator> bySql_;
};

// A result being read; gives its statement back to the cache at the end. The cache must outlive it.
class StatementRows : public engine::Rows {
 public:
  StatementRows(StatementCache& cache, std::string_view sql, const engine::Parameters& parameters);

  const std::vector<engine::Column>& Columns() const override { return **columns_; }
  std::shared_ptr<const std::vector<engine::Column>> KeptColumns() const override { return *columns_; }
  bool Next() override;
  automation::Variant Value(std::size_t column) const override {
    automation::Variant value;
    Read(column, value);
    return value;
  }
  void Read(std::size_t column, automation::Variant& into) const override { statement_->Read(column, into); }

 private:
  StatementCache::Lease statement_;
  const std::shared_ptr<const std::vector<engine::Column>>* columns_;  // the statement's
  bool first_ = true;
  bool hasRow_ = false;
};

}  // namespace ADODB::sqlite
