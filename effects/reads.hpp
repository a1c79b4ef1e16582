// What a run reads: the rows of record sets as their reader comes to them, and files as it finds them in
// folders. Only an explanation wants to know; where nobody does, none of this is installed.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/statement.hpp"
#include "platform/automation/class_table.hpp"
#include "platform/automation/variant.hpp"

namespace effects {

// Hears of one record set from its opening to its closing, which destroys this object.
class SetReader {
 public:
  // The value of a column of the row, by its place in the result.
  using Values = std::function<automation::Variant(std::size_t column)>;

  virtual ~SetReader() = default;

  // The set stands on a row. `anew`: because it was opened, or somebody looked for a row; otherwise it went
  // on from the row before.
  virtual void Row(const Values& values, bool anew) = 0;
  // The value of a column of that row is read.
  virtual void Taken(std::size_t column) = 0;
  // The set stands past its last row, or on one that cannot be read.
  virtual void NoRow(bool anew) = 0;
};

// Called on the thread of the job. What it raises reaches the job.
class ReadListener {
 public:
  virtual ~ReadListener() = default;

  // A record set was opened on a statement that yields these columns. Null where its rows do not matter.
  virtual std::unique_ptr<SetReader> Opened(const ADODB::Statement& statement,
                                            const std::vector<std::string>& columns) = 0;

  // Whether files of this name matter.
  virtual bool Wants(std::string_view fileName) const = 0;
  // Such a file was found in its folder; and its time of last access was read.
  virtual void Listed(const std::string& path) = 0;
  virtual void AccessTimeRead(const std::string& path) = 0;
};

// Registers "ADODB.Recordset" of `real`, heard. Record sets that Connection::Execute or ExecuteDelete give
// are not heard. The listener must outlive what the table makes.
void HearRows(automation::ClassTable& classes, const automation::ClassTable& real, ReadListener& listener);

// The same for "Scripting.FileSystemObject".
void HearFolders(automation::ClassTable& classes, const automation::ClassTable& real, ReadListener& listener);

}  // namespace effects
