// The record set that stands behind ADODB::Recordset for every provider.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/cursor/fields.hpp"
#include "platform/adodb/cursor/opening.hpp"
#include "platform/adodb/cursor/pending_change.hpp"
#include "platform/adodb/cursor/position.hpp"
#include "platform/adodb/cursor/static_rows.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/session/shared_session.hpp"

namespace ADODB::engine {

class RecordsetImpl final : public Recordset, private FieldValues {
 public:
  RecordsetImpl();
  ~RecordsetImpl() override;

  void SetCursorLocation(CursorLocation location) override;
  void SetMaxRecords(std::int64_t count) override;
  void Open(const Statement& statement, const ConnectionPtr& connection, CursorType cursorType,
            LockType lockType, int options) override;
  void Close() override;
  ObjectState State() const override;
  bool Bof() const override;
  bool Eof() const override;
  void MoveFirst() override;
  void MoveNext() override;
  std::int64_t RecordCount() const override;
  ADODB::Fields& Fields() override;
  const automation::Variant& Value(std::string_view name) override;
  const automation::Variant& Value(std::size_t index) override;
  void AddNew() override;
  void Update() override;
  void Delete(Affect affect) override;
  void Find(std::string_view criterion) override;
  void SetFilter(std::string_view criterion) override;
  std::vector<std::vector<automation::Variant>> GetRows() override;

  // Opens the set on a statement that the session has just prepared.
  void OpenPrepared(std::shared_ptr<SharedSession> session, const SharedSession::Prepared& prepared,
                    CursorType cursorType, LockType lockType);

  // Opens the set on rows that were read already; `order` holds the ordinals of all of them.
  void OpenCopied(std::shared_ptr<SharedSession> session, std::unique_ptr<StaticRows> rows,
                  std::vector<std::uint32_t> order);

 private:
  // What there is of a record set while it is open.
  struct OpenSet {
    OpenSet(FieldValues& owner, std::shared_ptr<SharedSession> on, CursorType cursorType, OpenedRows rows,
            const std::vector<std::string>& names, std::optional<std::vector<std::uint32_t>> order);

    RowWriter& Writer();  // 3251 when the rows cannot be changed
    std::vector<bool> ColumnsToCompare();
    Sought Read(std::string_view criterion);

    std::shared_ptr<SharedSession> session;
    CursorType type;
    std::unique_ptr<RowSource> source;
    std::unique_ptr<RowWriter> writer;
    FieldList fields;
    Position position;
    PendingChange change;
    Row asWritten;  // the current record, once its changes are written
  };

  const automation::Variant& ValueOf(std::size_t column) override;
  void SetValueOf(std::size_t column, const automation::Variant& value) override;

  OpenSet& Opened() const;  // 3704 when it is closed
  void RequireClosed() const;
  // The set, with the record that was edited or added written.
  OpenSet& Finished();

  CursorLocation location_ = CursorLocation::Server;
  std::size_t mostRows_ = 0;
  // Nothing while closed. Whoever asks where the set stands may make it look.
  mutable std::optional<OpenSet> set_;
};

}  // namespace ADODB::engine
