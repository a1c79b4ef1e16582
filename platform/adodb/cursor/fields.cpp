#include "platform/adodb/cursor/fields.hpp"

#include <utility>

#include "platform/adodb/cursor/failure.hpp"

namespace ADODB::engine {

FieldList::FieldList(FieldValues& owner, const std::vector<Column>& columns,
                     const std::vector<std::string>& written, const Dialect& dialect) {
  fields_.reserve(columns.size());
  if (dialect.FoldsNames()) shownNames_.reserve(columns.size());
  for (const Column& column : columns) {
    const std::string* name = &column.name;
    if (dialect.FoldsNames()) {
      std::string shown = dialect.ShownName(column.name);
      for (const std::string& word : written) {
        if (EqualsIgnoringAsciiCase(word, shown)) shown = word;
      }
      name = &shownNames_.emplace_back(std::move(shown));
    }
    fields_.emplace_back(owner, fields_.size(), *name);
  }
}

std::size_t FieldList::IndexOf(std::string_view name) const {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (EqualsIgnoringAsciiCase(fields_[i].Name(), name)) return i;
  }
  Fail(automation::ErrorNumber::ItemNotFound);
}

Field& FieldList::Item(std::size_t index) {
  if (index >= fields_.size()) Fail(automation::ErrorNumber::ItemNotFound);
  return fields_[index];
}

}  // namespace ADODB::engine
