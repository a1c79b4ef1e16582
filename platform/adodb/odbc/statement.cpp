#include "platform/adodb/odbc/statement.hpp"

#include <array>

namespace ADODB::odbc {
namespace {

// MariaDB's driver takes a unit whose lower byte is D8 to DB (in "Ø", say) for half a pair wherever it
// stands. It then counts two units for one: past the end of a text whose length it is told, but not of one
// that ends with a zero, as long as the last unit is a plain one. A blank behind a statement means nothing to
// any engine.
WideText ToStatementText(std::string_view sql) {
  if (sql.find('\0') != std::string_view::npos) {
    Raise({.sqlState = "42000", .nativeCode = 0, .message = "a statement cannot hold a zero character"});
  }
  WideText wide = ToWide(sql);
  wide.push_back(' ');
  wide.push_back(0);
  return wide;
}

}  // namespace

Statement::Statement(const ConnectionHandle& connection, FetchStyle style, Health& health)
    : health_(health), style_(style) {
  SQLHANDLE raw = nullptr;
  if (!Succeeded(SQLAllocHandle(SQL_HANDLE_STMT, connection.Get(), &raw))) {
    const Diagnostics diagnostics = ReadDiagnostics(SQL_HANDLE_DBC, connection.Get());
    health_.Note(diagnostics);
    Raise(diagnostics);
  }
  handle_ = StatementHandle(raw);
}

void Statement::Check(SQLRETURN status) {
  if (Succeeded(status)) return;
  const Diagnostics diagnostics = ReadDiagnostics(SQL_HANDLE_STMT, handle_.Get());
  health_.Note(diagnostics);
  Raise(diagnostics);
}

void Statement::Prepare(std::string_view sql) {
  WideText wide = ToStatementText(sql);
  Check(SQLPrepareW(handle_.Get(), wide.data(), SQL_NTS));
}

void Statement::Execute(const engine::Parameters& parameters) {
  // The buffers are bound by address, so there are as many as there will ever be before the first is bound.
  if (parameters_.size() < parameters.size()) parameters_ = std::vector<ParameterBuffer>(parameters.size());
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    Check(parameters_[i].Bind(handle_.Get(), static_cast<SQLUSMALLINT>(i + 1), parameters[i], style_.text));
  }
  described_ = false;
  TakeResult(SQLExecute(handle_.Get()));
}

void Statement::ExecuteDirect(std::string_view sql) {
  WideText wide = ToStatementText(sql);
  described_ = false;
  columns_.clear();
  TakeResult(SQLExecDirectW(handle_.Get(), wide.data(), SQL_NTS));
}

void Statement::TakeResult(SQLRETURN status) {
  affectedRows_ = 0;
  if (status == SQL_NO_DATA) {
    // A delete or update that met no row, as some drivers put it. Even with RETURNING there is nothing to
    // fetch or describe.
    columns_.clear();
    described_ = true;
    return;
  }
  Check(status);
  SQLLEN count = 0;
  Check(SQLRowCount(handle_.Get(), &count));
  if (count > 0) affectedRows_ = count;
}

std::vector<SQLSMALLINT> Statement::ResultTypes() {
  SQLSMALLINT count = 0;
  Check(SQLNumResultCols(handle_.Get(), &count));
  std::vector<SQLSMALLINT> types;
  for (SQLUSMALLINT number = 1; number <= static_cast<SQLUSMALLINT>(count); ++number) {
    SQLLEN type = 0;
    Check(SQLColAttributeW(handle_.Get(), number, SQL_DESC_CONCISE_TYPE, nullptr, 0, nullptr, &type));
    types.push_back(static_cast<SQLSMALLINT>(type));
  }
  return types;
}

std::vector<engine::Column>& Statement::Columns(std::string_view table) {
  if (described_) return columns_;
  // A prepared statement outlives changes to its tables. Names, which follow from its text, cost most to ask.
  if (columns_.empty() || ResultTypes() != types_) Describe(table);
  described_ = true;
  return columns_;
}

void Statement::Describe(std::string_view table) {
  types_.clear();
  columns_.clear();
  SQLSMALLINT count = 0;
  Check(SQLNumResultCols(handle_.Get(), &count));
  for (SQLUSMALLINT number = 1; number <= static_cast<SQLUSMALLINT>(count); ++number) {
    std::array<SQLWCHAR, 256> name{};
    SQLSMALLINT type = 0;
    Check(SQLDescribeColW(handle_.Get(), number, name.data(), static_cast<SQLSMALLINT>(name.size()), nullptr,
                          &type, nullptr, nullptr, nullptr));
    types_.push_back(type);
    engine::Column column;
    column.name = ToUtf8(name);
    column.type = TypeOf(type);
    if (table.empty()) {
      column.baseTable = ColumnText(number, SQL_DESC_BASE_TABLE_NAME);
      if (!column.baseTable.empty()) column.baseColumn = ColumnText(number, SQL_DESC_BASE_COLUMN_NAME);
    } else {
      column.baseTable = table;
      column.baseColumn = column.name;
    }
    columns_.push_back(std::move(column));
  }
  Bind();
}

void Statement::Bind() {
  if (!slots_.empty()) SQLFreeStmt(handle_.Get(), SQL_UNBIND);
  slots_ = std::vector<Slot>(columns_.size());
  if (!style_.bound) return;
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    if (!BoundColumn::Suits(types_[i])) continue;
    Check(
        slots_[i].bound.Bind(handle_.Get(), static_cast<SQLUSMALLINT>(i + 1), columns_[i].type, style_.text));
    slots_[i].isBound = true;
  }
}

std::string Statement::ColumnText(SQLUSMALLINT column, SQLUSMALLINT field) {
  std::array<SQLWCHAR, 256> text{};
  SQLSMALLINT bytes = 0;
  const SQLRETURN status = SQLColAttributeW(handle_.Get(), column, field, text.data(),
                                            static_cast<SQLSMALLINT>(sizeof text), &bytes, nullptr);
  if (!Succeeded(status)) return {};  // a driver need not know where a column comes from
  return ToUtf8(text);
}

bool Statement::Fetch() {
  const SQLRETURN status = SQLFetch(handle_.Get());
  if (status == SQL_NO_DATA) return false;
  Check(status);
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    Slot& slot = slots_[i];
    slot.asked = !slot.isBound || !slot.bound.Holds();
    if (!slot.asked) continue;
    const auto number = static_cast<SQLUSMALLINT>(i + 1);
    Check(ReadValue(handle_.Get(), number, columns_[i].type, style_.text, buffer_, slot.value));
    if (!slot.isBound) continue;
    // One long text is followed by others, which would be copied twice.
    Check(slot.bound.Unbind(handle_.Get(), number));
    slot.isBound = false;
  }
  return true;
}

void Statement::ReadInto(std::size_t column, automation::Variant& into) const {
  const Slot& slot = slots_[column];
  if (slot.asked) {
    into = slot.value;
  } else {
    slot.bound.Read(into, buffer_);
  }
}

void Statement::CloseCursor() {
  SQLFreeStmt(handle_.Get(), SQL_CLOSE);
}

}  // namespace ADODB::odbc
