#include "platform/adodb/cursor/deleted_rows.hpp"

#include <algorithm>
#include <numeric>
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
      Keep(*session_.Change("DELETE FROM " + shape_.table + " " + shape_.where + " RETURNING " + list, {}));
      // PostgreSQL's driver gives no result, and so no columns, when nothing was deleted.
      if (!deleted_.rows) Keep(*session_.Query("SELECT " + list + " FROM " + shape_.table + " WHERE 1=0"));
      return;
    }
    Keep(*session_.Change(dialect_.LockedSelect(list, shape_.table, shape_.where), {}));
    DeleteByKey();
  }

  // Tells the observer what was deleted; to be called before that is permanent. What it was told is added to
  // `told`.
  void Tell(std::vector<ChangeObserver::Ticket>& told) {
    const std::vector<std::uint32_t> order = InOrderOf(primaryKeys_);
    for (std::size_t first = 0; first < order.size(); first += ChangeObserver::kMostRows) {
      std::vector<NamedRow> keys;
      std::vector<NamedRow> before;
      for (std::size_t i = first; i < std::min(first + ChangeObserver::kMostRows, order.size()); ++i) {
        keys.push_back(NamedColumns(primaryPlaces_, primaryKeys_[order[i]]));
        if (session_.Observer()->WantsRows()) before.push_back(WholeRow(order[i]));
      }
      told.push_back(
          session_.Observer()->RowsChange(Change::Delete, shape_.table, std::move(keys), std::move(before)));
    }
  }

  DeletedRows Result() {
    deleted_.order = InOrderOf(keys_);
    if (IsObserved() && wanted_ == Deleted::Keys && deleted_.rows && !table_.keyColumns.empty()) {
      auto keys = std::make_unique<StaticRows>(deleted_.rows->KeyColumns());
      for (Row& key : keys_) keys->Append(std::move(key));
      deleted_.rows = std::move(keys);
    }
    return std::move(deleted_);
  }

 private:
  static std::vector<std::uint32_t> InOrderOf(const std::vector<Row>& keys) {
    std::vector<std::uint32_t> order(keys.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [&keys](std::uint32_t left, std::uint32_t right) {
      return std::lexicographical_compare(keys[left].begin(), keys[left].end(), keys[right].begin(),
                                          keys[right].end(), Less);
    });
    return order;
  }

  NamedRow NamedColumns(const std::vector<std::size_t>& places, const Row& values) const {
    NamedRow named;
    for (std::size_t i = 0; i < places.size(); ++i) {
      named.push_back(Named(deleted_.rows->Columns()[places[i]], values[i], dialect_));
    }
    return named;
  }

  NamedRow WholeRow(std::uint32_t ordinal) const {
    const Row& row = *deleted_.rows->At(ordinal, {});
    NamedRow named;
    const std::vector<Column>& columns = deleted_.rows->Columns();
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
    if (!deleted_.rows) {
      deleted_.rows = std::make_unique<StaticRows>(rows, HidesKey() ? table_.keyColumns.size() : 0);
      if (IsObserved()) FindPrimaryKey();
    }
    const std::size_t keyStart = columns.size() - table_.keyColumns.size();
    while (rows.Next()) {
      Row row(columns.size());
      for (std::size_t i = 0; i < row.size(); ++i) rows.ReadInto(i, row[i]);
      const bool hasKey = !table_.keyColumns.empty();
      keys_.emplace_back(hasKey ? row.begin() + static_cast<std::ptrdiff_t>(keyStart) : row.begin(),
                         row.end());
      if (IsObserved()) {
        Row& primary = primaryKeys_.emplace_back();
        for (const std::size_t place : primaryPlaces_) primary.push_back(row[place]);
      }
      deleted_.rows->Append(std::move(row));
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
    if (!table_.primaryKey.empty()) return;
    primaryPlaces_.resize(columns.size());
    std::iota(primaryPlaces_.begin(), primaryPlaces_.end(), std::size_t{0});
  }

  // The rows, which are locked. A statement takes one of a few numbers of keys, the last of which may be
  // repeated, so that there are few statements to prepare.
  void DeleteByKey() {
    std::size_t first = 0;
    while (first < keys_.size()) {
      const std::size_t left = keys_.size() - first;
      std::size_t places = 1;
      while (places < left && places < kMostKeys) places *= 4;
      const std::size_t count = std::min(left, places);
      Parameters parameters;
      for (std::size_t i = 0; i < places; ++i) {
        const Row& key = keys_[first + std::min(i, count - 1)];
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
  std::vector<Row> keys_;
  // For the observer.
  std::vector<std::size_t> primaryPlaces_;
  std::vector<Row> primaryKeys_;
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
