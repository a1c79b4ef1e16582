// The fields of a record set.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/recordset.hpp"
#include "platform/adodb/sql/translation.hpp"

namespace ADODB::engine {

// Whoever has the values behind the fields, by their position.
class FieldValues {
 public:
  virtual const automation::Variant& ValueOf(std::size_t column) = 0;
  virtual void SetValueOf(std::size_t column, const automation::Variant& value) = 0;

 protected:
  ~FieldValues() = default;
};

class FieldImpl final : public Field {
 public:
  FieldImpl(FieldValues& owner, std::size_t place, const std::string& name)
      : owner_(owner), place_(place), name_(name) {}
  const std::string& Name() const override { return name_; }
  const automation::Variant& Value() const override { return owner_.ValueOf(place_); }
  void SetValue(const automation::Variant& value) override { owner_.SetValueOf(place_, value); }

 private:
  FieldValues& owner_;
  std::size_t place_;
  const std::string& name_;
};

class FieldList final : public Fields {
 public:
  // The owner and the columns must outlive the list. An engine that folds names gets the suite's spelling
  // back: that of `written`, words of the statement, or else the dialect's.
  FieldList(FieldValues& owner, const std::vector<Column>& columns, const std::vector<std::string>& written,
            const Dialect& dialect);

  std::size_t Count() const override { return columns_.size(); }
  Field& Item(std::string_view name) override { return FieldAt(IndexOf(name)); }
  Field& Item(std::size_t index) override { return FieldAt(Checked(index)); }

  // The column of that name or at that place, as Item finds it.
  std::size_t IndexOf(std::string_view name) const;
  std::size_t Checked(std::size_t index) const;

 private:
  const std::string& Name(std::size_t column) const {
    return shownNames_.empty() ? columns_[column].name : shownNames_[column];
  }
  Field& FieldAt(std::size_t column);

  FieldValues& owner_;
  const std::vector<Column>& columns_;
  std::vector<FieldImpl> fields_;        // made when the first of them is asked for
  std::vector<std::string> shownNames_;  // where they differ from the columns'
};

}  // namespace ADODB::engine
