#include "platform/adodb/cursor/deleted_rows.hpp"

#include <algorithm>
#include <numeric>
#include <span>
#include <string>
#include <utility>

#include "platform/adodb/cursor/observed_changes.hpp"
#include "platform/adodb/sql/engine_error.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {
namespace {

using automation::Variant;

[[noreturn]] void CannotTell() {
  throw automation::Error(automation::ErrorNumber::FeatureNotAvailable, "ADODB.Command");
}

bool IsInteger(const Variant& value) {
  return std::holds_alternative<std::int32_t>(value.Get()) ||
         std::holds_alternative<std::int64_t>(value.Get());
}

// The same on every engine: whole numbers by their value, texts by their bytes.
bool Less(const Variant& left, const Variant& right) {
  if (IsInteger(left) != IsInteger(right)) return IsInteger(left);
  if (IsInteger(left)) return automation::ToInt64(left) < automation::ToInt64(right);
  const std::string* const text = std::get_if<std::string>(&left.Get());
  const std::string* const other = std::get_if<std::string>(&right.Get());
  if (text != nullptr && other != nullptr) return *text < *other;
  std::string bytes;
  std::string otherBytes;
  Encode(left, bytes);
  Encode(right, otherBytes);
  return bytes < otherBytes;
}

// Keys of rows, one behind the other.
class Keys {
 public:
  void SetWidth(std::size_t width) { width_ = width; }
  std::size_t Count() const { return width_ == 0 ? 0 : values_.size() / width_; }
  void Add(const Variant& value) { values_.push_back(value); }
  std::span<const Variant> At(std::size_t ordinal) const { return {&values_[ordinal * width_], width_}; }

  // Ordinals of the rows by their keys.
  std::vector<std::uint32_t> Order() const {
    std::vector<std::uint32_t> order(Count());
    std::iota(order.begin(), order.end(), 0U);
    const auto comesFirst = [this](std::uint32_t left, std::uint32_t right) {
      const std::span<const Variant> a = At(left);
      const std::span<const Variant> b = At(right);
      return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), Less);
    };
    if (!std::is_sorted(order.begin(), order.end(), comesFirst)) {
      std::sort(order.begin(), order.end(), comesFirst);
    }
    return order;
  }

 private:
  std::size_t width_ = 0;
  std::vector<Variant> values_;
};

class Deletion {
 public:
  Deletion(SharedSession& session, const DeleteShape& shape, Deleted wanted)
      : session_(session),
        shape_(shape),
        wanted_(wanted),
        dialect_(session.GetDialect()),
        table_(session.GetSession().Describe(shape.table)) {
    if (table_.address != TableShape::Address::Key) table_.keyColumns.clear();
    if (!Returns() && table_.keyColumns.empty()) CannotTell();
  }

  void Run() {
    const std::string list = List();
    if (Returns()) {
      // As it may be written with RETURNING: the table's name once.
      Keep(*session_.Change("DELETE FROM " + shape_.table + " " + shape_.where + " RETURNING " + list, {},
                            shape_.table));
      // PostgreSQL's driver gives no result, and so no columns, when nothing was deleted.
      if (!deleted_.rows) {
        Keep(*session_.Query("SELECT " + list + " FROM " + shape_.table + " WHERE 1=0", {}, shape_.table));
      }
      return;
    }
    Keep(*session_.Change(dialect_.LockedSelect(list, shape_.table, shape_.where), {}, shape_.table));
    DeleteByKey();
  }

  // Tells the observer what was deleted; to be called before that is permanent. What it was told is added to
  // `told`.
  void Tell(std::vector<ChangeObserver::Ticket>& told) {
    const Keys& primaryKeys = PrimaryKeys();
    const std::vector<std::uint32_t> order = primaryKeys.Order();
    for (std::size_t first = 0; first < order.size(); first += ChangeObserver::kMostRows) {
      std::vector<NamedRow> keys;
      std::vector<NamedRow> before;
      for (std::size_t i = first; i < std::min(first + ChangeObserver::kMostRows, order.size()); ++i) {
        keys.push_back(NamedColumns(primaryPlaces_, primaryKeys.At(order[i])));
        if (session_.Observer()->WantsRows()) before.push_back(WholeRow(order[i]));
      }
      told.push_back(
          session_.Observer()->RowsChange(Change::Delete, shape_.table, std::move(keys), std::move(before)));
    }
  }

  DeletedRows Result() {
    deleted_.order = keys_.Order();
    if (IsObserved() && wanted_ == Deleted::Keys && deleted_.rows && !table_.keyColumns.empty()) {
      auto keys = std::make_unique<StaticRows>(deleted_.rows->KeyColumns());
      for (std::size_t i = 0; i < keys_.Count(); ++i)
        keys->Append(Row(keys_.At(i).begin(), keys_.At(i).end()));
      deleted_.rows = std::move(keys);
    }
    return std::move(deleted_);
  }

 private:
  // Mostly the keys by which the rows are addressed.
  const Keys& PrimaryKeys() const { return otherPrimary_ ? primaryKeys_ : keys_; }

  NamedRow NamedColumns(const std::vector<std::size_t>& places, std::span<const Variant> values) const {
    NamedRow named;
    named.reserve(places.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
      named.push_back(Named(deleted_.rows->Columns()[places[i]], values[i], dialect_));
    }
    return named;
  }

  NamedRow WholeRow(std::uint32_t ordinal) const {
    const Row& row = *deleted_.rows->At(ordinal, {});
    NamedRow named;
    const std::vector<Column>& columns = deleted_.rows->Columns();
    named.reserve(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) named.push_back(Named(columns[i], row[i], dialect_));
    return named;
  }

  // Where there is no key, a join is done without: slowly, but surely.
  bool Returns() const {
    return dialect_.ReturnsDeletedRows() && (!shape_.namesTableTwice || table_.keyColumns.empty());
  }

  bool IsObserved() const { return session_.Observer() != nullptr; }

  bool ReadsRows() const {
    return wanted_ == Deleted::Rows || table_.keyColumns.empty() ||
           (IsObserved() && (session_.Observer()->WantsRows() || table_.primaryKey.empty()));
  }
  // Whether the key is read behind the columns that are wanted.
  bool HidesKey() const { return ReadsRows() || IsObserved(); }

  std::string List() const {
    std::string list = ReadsRows() ? "*" : "";
    const auto add = [&](const std::vector<std::string>& columns) {
      for (const std::string& column : columns) {
        list += (list.empty() ? "" : ",") + dialect_.QuotedName(column);
      }
    };
    if (!ReadsRows() && IsObserved()) add(table_.primaryKey);
    add(table_.keyColumns);
    return list;
  }

  void Keep(Rows& rows) {
    const std::vector<Column>& columns = rows.Columns();
    if (columns.empty()) return;
    // A row without a key is its own.
    const std::size_t keyWidth = table_.keyColumns.empty() ? columns.size() : table_.keyColumns.size();
    if (!deleted_.rows) {
      deleted_.rows = std::make_unique<StaticRows>(rows, HidesKey() ? table_.keyColumns.size() : 0);
      keys_.SetWidth(keyWidth);
      if (IsObserved()) FindPrimaryKey();
    }
    Row row;
    while (rows.Next()) {
      row.resize(columns.size());
      for (std::size_t i = 0; i < row.size(); ++i) rows.ReadInto(i, row[i]);
      for (std::size_t i = columns.size() - keyWidth; i < columns.size(); ++i) keys_.Add(row[i]);
      if (otherPrimary_) {
        for (const std::size_t place : primaryPlaces_) primaryKeys_.Add(row[place]);
      }
      deleted_.rows->Push(row);
    }
  }

  // Where the columns are that tell a row from the others.
  void FindPrimaryKey() {
    const std::vector<Column>& columns = deleted_.rows->Columns();
    const auto nameOf = [](const Column& column) -> const std::string& {
      return column.baseColumn.empty() ? column.name : column.baseColumn;
    };
    for (const std::string& name : table_.primaryKey) {
      for (std::size_t i = 0; i < columns.size(); ++i) {
        if (EqualsIgnoringAsciiCase(nameOf(columns[i]), name)) {
          primaryPlaces_.push_back(i);
          break;
        }
      }
    }
    if (table_.primaryKey.empty()) {
      primaryPlaces_.resize(columns.size());
      std::iota(primaryPlaces_.begin(), primaryPlaces_.end(), std::size_t{0});
    }
    otherPrimary_ = table_.primaryKey != table_.keyColumns;
    primaryKeys_.SetWidth(primaryPlaces_.size());
  }

  // The rows, which are locked. A statement takes one of a few numbers of keys, the last of which may be
  // repeated, so that there are few statements to prepare.
  void DeleteByKey() {
    std::size_t first = 0;
    while (first < keys_.Count()) {
      const std::size_t left = keys_.Count() - first;
      std::size_t places = 1;
      while (places < left && places < kMostKeys) places *= 4;
      const std::size_t count = std::min(left, places);
      Parameters parameters;
      for (std::size_t i = 0; i < places; ++i) {
        const std::span<const Variant> key = keys_.At(first + std::min(i, count - 1));
        parameters.insert(parameters.end(), key.begin(), key.end());
      }
      const std::int64_t affected = session_.Execute(ByKey(places), parameters);
      if (affected != static_cast<std::int64_t>(count)) {
        throw automation::Error(kRowChanged, "ADODB.Command",
                                "Rows that were locked for deletion could not be found again.");
      }
      first += count;
    }
  }

  std::string ByKey(std::size_t places) const {
    std::string sql = "DELETE FROM " + shape_.table + " WHERE ";
    if (table_.keyColumns.size() == 1) {
      sql += dialect_.QuotedName(table_.keyColumns.front()) + " IN (?";
      for (std::size_t i = 1; i < places; ++i) sql += ",?";
      return sql + ")";
    }
    for (std::size_t i = 0; i < places; ++i) {
      sql += i == 0 ? "(" : " OR (";
      for (std::size_t k = 0; k < table_.keyColumns.size(); ++k) {
        sql += (k == 0 ? "" : " AND ") + dialect_.QuotedName(table_.keyColumns[k]) + "=?";
      }
      sql += ")";
    }
    return sql;
  }

  static constexpr std::size_t kMostKeys = 256;

  SharedSession& session_;
  const DeleteShape& shape_;
  Deleted wanted_;
  const Dialect& dialect_;
  TableShape table_;
  DeletedRows deleted_;
  Keys keys_;
  // For the observer.
  std::vector<std::size_t> primaryPlaces_;
  Keys primaryKeys_;
  bool otherPrimary_ = false;  // than the key
};

}  // namespace

DeletedRows RunDelete(SharedSession& session, const SharedSession::Prepared& prepared, Deleted wanted) {
  const std::optional<DeleteShape>& shape = prepared.GetTranslation().deletion;
  if (!shape) CannotTell();
  Deletion deletion(session, *shape, wanted);
  ChangeObserver* const observer = session.Observer();
  std::vector<ChangeObserver::Ticket> told;
  try {
    session.InTransaction([&] {
      deletion.Run();
      if (observer != nullptr) deletion.Tell(told);
    });
  } catch (...) {
    for (const ChangeObserver::Ticket& ticket : told) observer->Failed(ticket, automation::PendingError());
    throw;
  }
  return deletion.Result();
}

}  // namespace ADODB::engine
