#include "tests/adodb/conformance/conformance.hpp"

#include "platform/adodb/registration.hpp"
#include "tests/support/raised_error.hpp"

namespace orvane_test {

ADODB::engine::Session& EngineUnderTest::OwnSession() {
  if (!session_) {
    auto text = ADODB::engine::ConnectionString::Parse(ConnectionString());
    text.Remove("Provider");
    session_ = Provider()->Connect(text);
  }
  return *session_;
}

void EngineUnderTest::Run(std::string_view sql) {
  OwnSession().Execute(sql, {});
}

std::vector<std::string> EngineUnderTest::Rows(std::string_view sql) {
  const auto result = OwnSession().Query(sql, {});
  std::vector<std::string> rows;
  while (result->Next()) {
    std::string row;
    for (std::size_t i = 0; i < result->Columns().size(); ++i) {
      const automation::Variant value = result->Value(i);
      if (i > 0) row += '|';
      row += value.IsNull() ? "NULL" : automation::ToText(value);
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

void EngineUnderTest::CreateTable(const std::string& name,
                                  const std::vector<std::pair<std::string, ColumnKind>>& columns,
                                  const std::string& tableConstraint) {
  Run("DROP TABLE IF EXISTS " + name);
  std::string sql = "CREATE TABLE " + name + " (";
  for (std::size_t i = 0; i < columns.size(); ++i) {
    sql += (i == 0 ? "" : ", ") + columns[i].first + " " + Declaration(columns[i].second);
  }
  if (!tableConstraint.empty()) sql += ", " + tableConstraint;
  Run(sql + ")");
}

Conformance::Conformance() {
  ADODB::RegisterClasses(runtime.runtime.classes,
                         {std::make_shared<FaultyProvider>(engine->Provider(), faults)},
                         [this] { return now; });
}

ADODB::ConnectionPtr Conformance::Connect() {
  auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  connection->Open(engine->ConnectionString(), "", "", -1);
  return connection;
}

ADODB::RecordsetPtr Conformance::NewRecordset() {
  return automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
}

ADODB::RecordsetPtr Conformance::Open(const ADODB::Statement& statement,
                                      const ADODB::ConnectionPtr& connection, ADODB::CursorType cursor,
                                      ADODB::LockType lock) {
  ADODB::RecordsetPtr rows = NewRecordset();
  rows->Open(statement, connection, cursor, lock, -1);
  return rows;
}

void Conformance::MakeNumbers(int count) {
  engine->CreateTable("NUMBERS",
                      {{"ID", ColumnKind::Key}, {"NAME", ColumnKind::Text}, {"VALUE", ColumnKind::Integer}});
  std::string sql;
  for (int i = 1; i <= count; ++i) {
    sql += sql.empty() ? "INSERT INTO NUMBERS VALUES " : ",";
    sql += "(" + std::to_string(i) + ",'n" + std::to_string(i) + "'," + std::to_string(i % 3) + ")";
    if (i % 500 != 0 && i != count) continue;
    engine->Run(sql);
    sql.clear();
  }
}

void Conformance::MakePeople() {
  engine->CreateTable("PEOPLE", {{"ID", ColumnKind::Generated},
                                 {"NAME", ColumnKind::Text},
                                 {"VISITS", ColumnKind::Integer},
                                 {"ACTIVE", ColumnKind::Boolean},
                                 {"SEEN", ColumnKind::DateTime},
                                 {"NOTE", ColumnKind::LongText}});
  engine->Run("INSERT INTO PEOPLE (NAME) VALUES (NULL)");
}

std::vector<std::string> Walk(ADODB::Recordset& rows, std::string_view column) {
  std::vector<std::string> values;
  for (; !rows.Eof(); rows.MoveNext()) {
    const automation::Variant& value = rows.Value(column);
    values.push_back(value.IsNull() ? "NULL" : automation::ToText(value));
  }
  return values;
}

}  // namespace orvane_test
