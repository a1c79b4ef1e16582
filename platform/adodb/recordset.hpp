// An ADO record set: "ADODB.Recordset".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/statement.hpp"
#include "platform/adodb/types.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB {

// One column of the current record. A Field stays valid until its record set is closed.
class ORVANE_EXPORT Field {
 public:
  virtual ~Field() = default;
  virtual const std::string& Name() const = 0;

  // The value in the current record; 3021 when there is none. The reference holds until the record set moves,
  // changes or closes.
  virtual const automation::Variant& Value() const = 0;

  // Keeps the value for the next Update. 3251 on a read-only record set.
  virtual void SetValue(const automation::Variant& value) = 0;
};

class ORVANE_EXPORT Fields {
 public:
  virtual ~Fields() = default;
  virtual std::size_t Count() const = 0;
  // By name without regard to case, or by position from 0; 3265 when there is no such column.
  virtual Field& Item(std::string_view name) = 0;
  virtual Field& Item(std::size_t index) = 0;
};

class ORVANE_EXPORT Recordset : public automation::Object {
 public:
  // Before Open; 3705 afterwards. A client-side cursor is always a static one.
  virtual void SetCursorLocation(CursorLocation location) = 0;
  // The most records that Open fetches; 0 (as created) is no limit.
  virtual void SetMaxRecords(std::int64_t count) = 0;

  // Runs a statement that yields rows and stands on the first. 3705 when the set is open already, 3704 when
  // the connection is not open, 3001 for a null connection; a statement that yields no rows leaves the set
  // closed.
  virtual void Open(const Statement& statement, const ConnectionPtr& connection, CursorType cursorType,
                    LockType lockType, int options) = 0;

  // Gives up the rows and any change not yet updated. 3704 when it is not open.
  virtual void Close() = 0;
  virtual ObjectState State() const = 0;

  // Before the first record, past the last one; both are true for a set without records. 3704 when closed.
  virtual bool Bof() const = 0;
  virtual bool Eof() const = 0;

  // MoveFirst on an empty set, MoveNext past the end: 3021. A move away from an edited record updates it
  // first.
  virtual void MoveFirst() = 0;
  virtual void MoveNext() = 0;

  // The number of records for static and keyset cursors, -1 (unknown) for forward-only and dynamic ones.
  virtual std::int64_t RecordCount() const = 0;

  virtual ADODB::Fields& Fields() = 0;

  // Starts a new record, which becomes the current one; 3251 on a read-only set.
  virtual void AddNew() = 0;
  // Writes the changes of the current record, or inserts the new one; afterwards a generated key can be read.
  virtual void Update() = 0;
  // Deletes the current record at once. The set stays on it, and reading it raises 3021, until it is moved.
  virtual void Delete(Affect affect) = 0;

  // From the current record forward to the first that meets `criterion` ("NAME='text'", "NAME=12"); past the
  // last record when none does. 3001 for a criterion that is none, 3021 without a current record.
  virtual void Find(std::string_view criterion) = 0;

  // Shows only the records that meet `criterion` and moves to the first of them; empty text ends the filter.
  virtual void SetFilter(std::string_view criterion) = 0;

  // The records from the current one to the last: result[column][row]. The set is past its end afterwards.
  virtual std::vector<std::vector<automation::Variant>> GetRows() = 0;

  // The value of a column in the current record, or its change: Fields().Item(name) in short.
  virtual const automation::Variant& Value(std::string_view name) { return Fields().Item(name).Value(); }
  virtual const automation::Variant& Value(std::size_t index) { return Fields().Item(index).Value(); }
  void SetValue(std::string_view name, const automation::Variant& value) {
    Fields().Item(name).SetValue(value);
  }
};

}  // namespace ADODB
