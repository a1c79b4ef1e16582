// Adds rows to a table through a record set, so that the database's own types decide how a value is kept.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/variant.hpp"

namespace demo {

class Table {
 public:
  // `columns` are filled by every Add, in this order. The names come from the program, never from outside.
  Table(ADODB::ConnectionPtr connection, std::string_view name, std::vector<std::string> columns);
  ~Table();
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  void Add(const std::vector<automation::Variant>& values);
  std::int64_t Count() const { return count_; }

 private:
  void Open();
  void Close();

  const ADODB::ConnectionPtr connection_;
  const std::string name_;
  const std::vector<std::string> columns_;
  ADODB::RecordsetPtr recordset_;
  std::vector<ADODB::Field*> fields_;
  std::int64_t count_ = 0;
};

}  // namespace demo
