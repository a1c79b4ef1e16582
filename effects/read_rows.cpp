#include <optional>
#include <utility>

#include "effects/reads.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"

namespace effects {
namespace {

using automation::Variant;

constexpr std::string_view kRecordset = "ADODB.Recordset";

class HeardField final : public ADODB::Field {
 public:
  HeardField(ADODB::Field& real, std::size_t column, SetReader& reader)
      : real_(real), column_(column), reader_(reader) {}

  const std::string& Name() const override { return real_.Name(); }
  const Variant& Value() const override {
    const Variant& value = real_.Value();
    reader_.Taken(column_);
    return value;
  }
  void SetValue(const Variant& value) override { real_.SetValue(value); }

  bool IsOf(const ADODB::Field& field) const { return &real_ == &field; }

 private:
  ADODB::Field& real_;
  const std::size_t column_;
  SetReader& reader_;
};

// Of an open set whose rows matter.
class HeardFields final : public ADODB::Fields {
 public:
  HeardFields(ADODB::Fields& real, std::unique_ptr<SetReader> reader)
      : real_(real), reader_(std::move(reader)) {
    fields_.reserve(real.Count());
    for (std::size_t i = 0; i < real.Count(); ++i) fields_.emplace_back(real.Item(i), i, *reader_);
  }

  std::size_t Count() const override { return fields_.size(); }
  ADODB::Field& Item(std::string_view name) override {
    const ADODB::Field& found = real_.Item(name);
    for (HeardField& field : fields_) {
      if (field.IsOf(found)) return field;
    }
    return real_.Item(name);
  }
  ADODB::Field& Item(std::size_t index) override {
    return index < fields_.size() ? fields_[index] : real_.Item(index);
  }

  SetReader& Reader() const { return *reader_; }

 private:
  ADODB::Fields& real_;
  const std::unique_ptr<SetReader> reader_;
  std::vector<HeardField> fields_;
};

class HeardRecordset final : public ADODB::Recordset {
 public:
  HeardRecordset(ADODB::RecordsetPtr real, ReadListener& listener)
      : real_(std::move(real)), listener_(listener) {}

  void SetCursorLocation(ADODB::CursorLocation location) override { real_->SetCursorLocation(location); }
  void SetMaxRecords(std::int64_t count) override { real_->SetMaxRecords(count); }

  void Open(const ADODB::Statement& statement, const ADODB::ConnectionPtr& connection,
            ADODB::CursorType cursorType, ADODB::LockType lockType, int options) override {
    real_->Open(statement, connection, cursorType, lockType, options);
    heard_.reset();
    if (real_->State() != ADODB::ObjectState::Open) return;
    ADODB::Fields& fields = real_->Fields();
    std::vector<std::string> columns;
    for (std::size_t i = 0; i < fields.Count(); ++i) columns.push_back(fields.Item(i).Name());
    if (auto reader = listener_.Opened(statement, columns)) heard_.emplace(fields, std::move(reader));
    TellRow(true);
  }
  void Close() override {
    real_->Close();
    heard_.reset();
  }
  ADODB::ObjectState State() const override { return real_->State(); }
  bool Bof() const override { return real_->Bof(); }
  bool Eof() const override { return real_->Eof(); }

  void MoveFirst() override {
    real_->MoveFirst();
    TellRow(true);
  }
  void MoveNext() override {
    real_->MoveNext();
    TellRow(false);
  }
  void Find(std::string_view criterion) override {
    real_->Find(criterion);
    TellRow(true);
  }
  void SetFilter(std::string_view criterion) override {
    real_->SetFilter(criterion);
    TellRow(true);
  }
  std::vector<std::vector<Variant>> GetRows() override {
    std::vector<std::vector<Variant>> columns = real_->GetRows();
    if (!heard_) return columns;
    SetReader& reader = heard_->Reader();
    for (std::size_t row = 0; !columns.empty() && row < columns.front().size(); ++row) {
      reader.Row([&](std::size_t column) { return columns[column][row]; }, false);
      for (std::size_t column = 0; column < columns.size(); ++column) reader.Taken(column);
    }
    reader.NoRow(false);
    return columns;
  }

  std::int64_t RecordCount() const override { return real_->RecordCount(); }
  ADODB::Fields& Fields() override {
    ADODB::Fields& fields = real_->Fields();  // 3704 when it is closed
    return heard_ ? *heard_ : fields;
  }
  void AddNew() override { real_->AddNew(); }
  void Update() override { real_->Update(); }
  void Delete(ADODB::Affect affect) override { real_->Delete(affect); }

 private:
  void TellRow(bool anew) {
    if (!heard_) return;
    SetReader& reader = heard_->Reader();
    try {
      if (!real_->Bof() && !real_->Eof()) {
        ADODB::Fields& fields = real_->Fields();
        reader.Row([&fields](std::size_t column) { return fields.Item(column).Value(); }, anew);
        return;
      }
    } catch (const automation::Error&) {
      // The job meets it when it reads the row.
    }
    reader.NoRow(anew);
  }

  const ADODB::RecordsetPtr real_;
  ReadListener& listener_;
  std::optional<HeardFields> heard_;
};

}  // namespace

void HearRows(automation::ClassTable& classes, const automation::ClassTable& real, ReadListener& listener) {
  classes.RegisterAs<ADODB::Recordset>(kRecordset, [real, &listener] {
    return std::make_shared<HeardRecordset>(automation::As<ADODB::Recordset>(real.Create(kRecordset)),
                                            listener);
  });
}

}  // namespace effects
