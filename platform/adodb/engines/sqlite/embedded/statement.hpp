// Prepared statements and their rows.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/session/provider.hpp"

namespace ADODB::sqlite {

struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// A prepared statement with what is known about its columns.
class Prepared : public engine::PreparedStatement {
 public:
  Prepared(sqlite3* database, std::string_view sql);

  bool IsRunning() const { return running_; }
  void Bind(const engine::Parameters& parameters);
  bool Step();  // false past the last row; raises what the engine says
  void Reset() noexcept;

  // Valid after the first Step; a changed schema is noticed there.
  const std::shared_ptr<const std::vector<engine::Column>>& Columns();
  void ReadInto(std::size_t column, automation::Variant& into) const;

 private:
  sqlite3* database_;
  std::unique_ptr<sqlite3_stmt, FinalizeStatement> statement_;
  std::shared_ptr<const std::vector<engine::Column>> columns_;
  bool running_ = false;
  std::vector<std::string> kept_;  // the strings that are bound
  bool holdsMuch_ = false;         // one of them is large
  int describedAt_ = -1;           // number of re-preparations when columns_ were read
};

// A statement for one run: the one that is kept for its text, unless that is running already, or one of its
// own.
class PreparedRun {
 public:
  PreparedRun(sqlite3* database, const engine::Sql& sql);
  ~PreparedRun() { statement_->Reset(); }
  PreparedRun(const PreparedRun&) = delete;
  PreparedRun& operator=(const PreparedRun&) = delete;
  Prepared* operator->() const { return statement_; }

 private:
  Prepared* statement_;
  std::unique_ptr<Prepared> own_;
};

// A result being read.
class StatementRows : public engine::Rows {
 public:
  StatementRows(sqlite3* database, const engine::Sql& sql, const engine::Parameters& parameters);

  const std::vector<engine::Column>& Columns() const override { return **columns_; }
  std::shared_ptr<const std::vector<engine::Column>> SharedColumns() const override { return *columns_; }
  bool Next() override;
  void ReadInto(std::size_t column, automation::Variant& into) const override {
    statement_->ReadInto(column, into);
  }

 private:
  PreparedRun statement_;
  const std::shared_ptr<const std::vector<engine::Column>>* columns_;  // the statement's
  bool first_ = true;
  bool hasRow_ = false;
};

}  // namespace ADODB::sqlite
