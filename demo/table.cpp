#include "demo/table.hpp"

#include <cstddef>

#include "platform/adodb/statement.hpp"
#include "platform/automation/runtime.hpp"

namespace demo {
namespace {

// A client-side record set keeps what was added to it; it is opened anew from time to time.
constexpr std::int64_t kRowsPerRecordset = 2000;

}  // namespace

Table::Table(ADODB::ConnectionPtr connection, std::string_view name, std::vector<std::string> columns)
    : connection_(std::move(connection)), name_(name), columns_(std::move(columns)) {}

Table::~Table() {
  try {
    Close();
  } catch (const automation::Error&) {
    // Every row was written when it was added; there is nothing left to lose.
  }
}

void Table::Open() {
  recordset_ = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  recordset_->SetCursorLocation(ADODB::CursorLocation::Client);
  ADODB::Statement statement = "SELECT * FROM ";
  statement += ADODB::SqlFragment(name_);
  statement += " WHERE 0 = 1";
  recordset_->Open(statement, connection_, ADODB::CursorType::Static, ADODB::LockType::Optimistic,
                   ADODB::kCommandText);
  fields_.clear();
  for (const std::string& column : columns_) fields_.push_back(&recordset_->Fields().Item(column));
}

void Table::Close() {
  if (!recordset_) return;
  fields_.clear();
  recordset_->Close();
  recordset_ = nullptr;
}

void Table::Add(const std::vector<automation::Variant>& values) {
  if (count_ % kRowsPerRecordset == 0) {
    Close();
    Open();
  }
  recordset_->AddNew();
  for (std::size_t i = 0; i < fields_.size(); ++i) fields_[i]->SetValue(values.at(i));
  recordset_->Update();
  ++count_;
}

}  // namespace demo
