// The record set that stands behind ADODB::Recordset for every provider.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/adodb/cursor/handed_out.hpp"
#include "platform/adodb/cursor/row_source.hpp"
#include "platform/adodb/cursor/row_writer.hpp"
#include "platform/adodb/cursor/searches.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/session/shared_session.hpp"

namespace ADODB::engine {

class RecordsetImpl;

class FieldImpl : public Field {
 public:
  // The name is kept by the record set.
  FieldImpl(RecordsetImpl& owner, std::size_t place, const std::string& name)
      : owner_(owner), place_(place), name_(name) {}
  const std::string& Name() const override { return name_; }
  const automation::Variant& Value() const override;
  void SetValue(const automation::Variant& value) override;

 private:
  RecordsetImpl& owner_;
  std::size_t place_;
  const std::string& name_;
};

class FieldList : public Fields, public std::vector<FieldImpl> {
 public:
  std::size_t Count() const override { return size(); }
  Field& Item(std::string_view name) override;
  Field& Item(std::size_t index) override;
};

class RecordsetImpl : public Recordset {
 public:
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
  void AddNew() override;
  void Update() override;
  void Delete(Affect affect) override;
  void Find(std::string_view criterion) override;
  void SetFilter(std::string_view criterion) override;
  std::vector<std::vector<automation::Variant>> GetRows() override;

  // Opens the set on a statement that the link has just prepared.
  void OpenTranslated(const Statement& statement, const Translation& translation, std::shared_ptr<Link> link,
                      CursorType cursorType, LockType lockType);

  // Opens the set on rows that were read already; `order` holds the ordinals of all of them.
  void OpenCopied(const Statement& statement, std::shared_ptr<Link> link, std::unique_ptr<RowSource> rows,
                  std::vector<std::uint32_t> order);

  const automation::Variant& ValueOf(std::size_t column);
  void SetValueOf(std::size_t column, const automation::Variant& value);

 private:
  void RequireOpen() const;
  void RequireClosed() const;
  void RequireCurrent();
  RowWriter& Writer();
  void Reset();
  void OpenOnTable(const std::shared_ptr<Link>& link, const std::string& sql, LockType lockType);
  void Copy(Session& session, std::string_view sql, const Parameters& parameters, std::size_t keyCount);
  void NameFields(const Statement& statement, const Dialect& dialect);

  bool Exists() const;
  std::size_t Ordinal() const { return filter_ ? (*filter_)[place_] : place_; }
  const Row* RowAt(std::size_t ordinal) const;
  void Settle() const;
  void GoTo(std::size_t place, bool fromFront);
  void FinishEdit();
  void ShowAsWritten();
  // What a record was searched by, to be held against its row when that is read.
  struct Sought {
    std::size_t column = 0;
    automation::Variant value;
    std::string bytes;  // that stand for the value
  };
  Sought ReadCriterion(std::string_view text) const;
  bool Meets(const Row& row, const Sought& sought) const;
  std::optional<std::size_t> PlaceOf(const ValueIndex& index, const Sought& sought) const;

  CursorLocation location_ = CursorLocation::Server;
  std::size_t mostRows_ = 0;

  std::shared_ptr<Link> link_;  // null while closed
  CursorType type_ = CursorType::ForwardOnly;
  std::unique_ptr<RowSource> source_;
  bool readsRowsAgain_ = false;  // the source does, when they become current
  std::unique_ptr<RowWriter> writer_;
  std::unique_ptr<Searches> searches_;
  FieldList fields_;
  std::vector<std::string> shownNames_;  // where they differ from the columns'

  // The place is an ordinal, or one in the filter's list. A move only notes where to go; what is there is
  // looked at when somebody asks, so that a search that starts from the front need not fetch the front.
  mutable std::size_t place_ = 0;
  mutable bool settled_ = false;
  mutable bool eof_ = true;
  mutable bool bof_ = true;
  bool fromFront_ = true;
  bool currentGone_ = false;          // the current record was deleted here
  mutable const Row* row_ = nullptr;  // the current record, once fetched
  mutable HandedOut handedOut_;       // of the current record
  std::optional<Sought> found_;       // by which Find met the current record

  std::optional<std::vector<std::uint32_t>> filter_;
  std::optional<Sought> filteredBy_;

  bool adding_ = false;
  bool editing_ = false;
  Changes changes_;
  Row edited_;     // what the current record looks like with its changes
  Row asWritten_;  // the current record, once its changes are written
};

}  // namespace ADODB::engine
