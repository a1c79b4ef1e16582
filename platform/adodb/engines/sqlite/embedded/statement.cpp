#include "platform/adodb/engines/sqlite/embedded/statement.hpp"

#include <limits>
#include <type_traits>
#include <utility>

#include "platform/adodb/engines/sqlite/embedded/error.hpp"
#include "platform/adodb/engines/sqlite/embedded/values.hpp"
#include "platform/automation/iso_text.hpp"

namespace ADODB::sqlite {
namespace {

constexpr std::size_t kLongestKeptValue = 256;

// `kept` holds a text for as long as it is bound; its memory serves one text after another.
int BindOne(sqlite3_stmt* statement, int place, const automation::Variant& value, std::string& kept) {
  return std::visit(
      [&](const auto& held) -> int {
        using Held = std::decay_t<decltype(held)>;
        const auto bindText = [&](std::string_view text) {
          kept = text;
          return sqlite3_bind_text64(statement, place, kept.data(), kept.size(), SQLITE_STATIC, SQLITE_UTF8);
        };
        if constexpr (std::is_same_v<Held, automation::EmptyValue> ||
                      std::is_same_v<Held, automation::NullValue>) {
          return sqlite3_bind_null(statement, place);
        } else if constexpr (std::is_same_v<Held, double>) {
          return sqlite3_bind_double(statement, place, held);
        } else if constexpr (std::is_arithmetic_v<Held>) {
          return sqlite3_bind_int64(statement, place, held ? static_cast<std::int64_t>(held) : 0);
        } else if constexpr (std::is_same_v<Held, automation::DateTime>) {
          return bindText(automation::IsoText(held));
        } else if constexpr (std::is_same_v<Held, std::string>) {
          return bindText(held);
        } else {
          throw automation::Error(automation::ErrorNumber::TypeMismatch);
        }
      },
      value.Get());
}

std::string TextOrEmpty(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

std::string CollationOf(sqlite3* database, const engine::Column& column) {
  if (column.baseTable.empty()) return {};
  const char* collation = nullptr;
  sqlite3_table_column_metadata(database, nullptr, column.baseTable.c_str(), column.baseColumn.c_str(),
                                nullptr, &collation, nullptr, nullptr, nullptr);
  return TextOrEmpty(collation);
}

}  // namespace

Prepared::Prepared(sqlite3* database, std::string_view sql) : database_(database) {
  if (sql.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw ErrorOf(SQLITE_TOOBIG, "string or blob too big");
  }
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()),
                                      SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  statement_.reset(statement);
  if (code != SQLITE_OK) throw ErrorOf(database, code);
  if (statement == nullptr) throw ErrorOf(SQLITE_ERROR, "incomplete input");
}

void Prepared::Bind(const engine::Parameters& parameters) {
  // An unbound "?" would silently count as NULL.
  if (sqlite3_bind_parameter_count(statement_.get()) != static_cast<int>(parameters.size())) {
    throw ErrorOf(SQLITE_ERROR, "the statement and its parameters do not match in number");
  }
  kept_.resize(parameters.size());
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const int code = BindOne(statement_.get(), static_cast<int>(i) + 1, parameters[i], kept_[i]);
    if (code != SQLITE_OK) throw ErrorOf(database_, code);
    holdsMuch_ = holdsMuch_ || kept_[i].size() > kLongestKeptValue;
  }
}

bool Prepared::Step() {
  running_ = true;
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  // Once it is reset, the database no longer tells what went wrong.
  struct ResetAfterwards {
    Prepared& statement;
    ~ResetAfterwards() { statement.Reset(); }
  } const reset{*this};
  throw ErrorOf(database_, code);
}

void Prepared::Reset() noexcept {
  if (!running_) return;
  running_ = false;
  sqlite3_reset(statement_.get());
  // The next Bind replaces every value; until then only large ones are worth giving up.
  if (!holdsMuch_) return;
  sqlite3_clear_bindings(statement_.get());
  kept_.clear();
  holdsMuch_ = false;
}

const std::shared_ptr<const std::vector<engine::Column>>& Prepared::Columns() {
  const int prepared = sqlite3_stmt_status(statement_.get(), SQLITE_STMTSTATUS_REPREPARE, 0);
  if (prepared == describedAt_) return columns_;
  std::vector<engine::Column> columns;
  for (int i = 0; i < sqlite3_column_count(statement_.get()); ++i) {
    engine::Column column;
    column.name = TextOrEmpty(sqlite3_column_name(statement_.get(), i));
    column.type = TypeOfDeclaration(TextOrEmpty(sqlite3_column_decltype(statement_.get(), i)));
    column.baseTable = TextOrEmpty(sqlite3_column_table_name(statement_.get(), i));
    column.baseColumn = TextOrEmpty(sqlite3_column_origin_name(statement_.get(), i));
    column.collation = CollationOf(database_, column);
    columns.push_back(std::move(column));
  }
  columns_ = std::make_shared<const std::vector<engine::Column>>(std::move(columns));
  describedAt_ = prepared;
  return columns_;
}

void Prepared::ReadInto(std::size_t column, automation::Variant& into) const {
  ReadValue(statement_.get(), static_cast<int>(column), (*columns_)[column].type, into);
}

PreparedRun::PreparedRun(sqlite3* database, const engine::Sql& sql) {
  std::unique_ptr<engine::PreparedStatement>* const kept = sql.Prepared();
  if (kept != nullptr && !*kept) *kept = std::make_unique<Prepared>(database, sql);
  statement_ = kept == nullptr ? nullptr : static_cast<Prepared*>(kept->get());
  if (statement_ != nullptr && !statement_->IsRunning()) return;
  own_ = std::make_unique<Prepared>(database, sql);
  statement_ = own_.get();
}

StatementRows::StatementRows(sqlite3* database, const engine::Sql& sql, const engine::Parameters& parameters)
    : statement_(database, sql) {
  // The first row is fetched at once: what the engine has against the statement is said here, and a schema
  // that changed since the statement was prepared is taken in before the columns are looked at.
  statement_->Bind(parameters);
  hasRow_ = statement_->Step();
  columns_ = &statement_->Columns();
}

bool StatementRows::Next() {
  if (first_) {
    first_ = false;
  } else if (hasRow_) {
    hasRow_ = statement_->Step();
  }
  // A finished statement holds no lock, even while its rows object lives on.
  if (!hasRow_) statement_->Reset();
  return hasRow_;
}

}  // namespace ADODB::sqlite
