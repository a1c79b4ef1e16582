#include "platform/adodb/cursor/fields.hpp"

#include <utility>

#include "platform/adodb/cursor/failure.hpp"

namespace ADODB::engine {

FieldList::FieldList(FieldValues& owner, const std::vector<Column>& columns,
                     const std::vector<std::string>& written, const Dialect& dialect)
    : owner_(owner), columns_(columns) {
  if (!dialect.FoldsNames()) return;
  shownNames_.reserve(columns.size());
  for (const Column& column : columns) {
    std::string shown = dialect.ShownName(column.name);
    for (const std::string& word : written) {
      if (EqualsIgnoringAsciiCase(word, shown)) shown = word;
    }
    shownNames_.push_back(std::move(shown));
  }
}

std::size_t FieldList::IndexOf(std::string_view name) const {
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (EqualsIgnoringAsciiCase(Name(i), name)) return i;
  }
  Fail(automation::ErrorNumber::ItemNotFound);
}

std::size_t FieldList::Checked(std::size_t index) const {
  if (index >= columns_.size()) Fail(automation::ErrorNumber::ItemNotFound);
  return index;
}

Field& FieldList::FieldAt(std::size_t column) {
  if (fields_.empty()) {
    fields_.reserve(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) fields_.emplace_back(owner_, i, Name(i));
  }
  return fields_[column];
}

}  // namespace ADODB::engine
