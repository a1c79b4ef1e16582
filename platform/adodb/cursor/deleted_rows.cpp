#include "platform/adodb/cursor/deleted_rows.hpp"

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

#include "platform/adodb/sql/delete_shape.hpp"
#include "platform/adodb/sql/engine_error.hpp"

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
  Deletion(Link& link, Deleted wanted) : link_(link), wanted_(wanted) {}

  void RunPiece(const std::string& sql) {
    const DeleteShape shape = Read(sql);
    if (Returns(shape)) {
      // As it may be written with RETURNING: the table's name once.
      Keep(*Session().Query("DELETE FROM " + shape.table + " " + shape.where + " RETURNING " + List(), {}));
      // PostgreSQL's driver gives no result, and so no columns, when nothing was deleted.
      if (!deleted_.rows)
        Keep(*Session().Query("SELECT " + List() + " FROM " + shape.table + " WHERE 1=0", {}));
      return;
    }
    if (table_.keyColumns.empty()) CannotTell();
    const std::size_t first = deleted_.rows ? deleted_.rows->KnownCount() : 0;
    Keep(*Session().Query(Dialect().LockedSelect(List(), shape.table, shape.where), {}));
    DeleteByKey(shape.table, first);
  }

  DeletedRows Result() {
    deleted_.order.resize(keys_.size());
    std::iota(deleted_.order.begin(), deleted_.order.end(), 0U);
    std::sort(deleted_.order.begin(), deleted_.order.end(), [this](std::uint32_t left, std::uint32_t right) {
      return std::lexicographical_compare(keys_[left].begin(), keys_[left].end(), keys_[right].begin(),
                                          keys_[right].end(), Less);
    });
    return std::move(deleted_);
  }

  // Whether the statement takes more than one message.
  bool NeedsTransaction(const Translation& translation) {
    return translation.statements.size() > 1 || !Dialect().ReturnsDeletedRows() ||
           !Returns(Read(translation.statements.front()));
  }

 private:
  ADODB::engine::Session& Session() const { return link_.GetSession(); }
  const ADODB::engine::Dialect& Dialect() const { return Session().GetDialect(); }

  DeleteShape Read(const std::string& sql) {
    DeleteShape shape;
    if (!ReadDelete(sql, shape)) CannotTell();
    table_ = Session().Describe(shape.table);
    if (table_.address != TableShape::Address::Key) table_.keyColumns.clear();
    return shape;
  }

  // Where there is no key, a join is done without: slowly, but surely.
  bool Returns(const DeleteShape& shape) const {
    return Dialect().ReturnsDeletedRows() && (!shape.namesTableTwice || table_.keyColumns.empty());
  }

  bool KeysOnly() const { return wanted_ == Deleted::Keys && !table_.keyColumns.empty(); }

  std::string List() const {
    std::string list = KeysOnly() ? "" : "*";
    for (const std::string& column : table_.keyColumns) {
      list += (list.empty() ? "" : ",") + Dialect().QuotedName(column);
    }
    return list;
  }

  void Keep(Rows& rows) {
    const std::size_t columns = rows.Columns().size();
    if (columns == 0) return;
    const std::size_t hidden = KeysOnly() ? 0 : table_.keyColumns.size();
    if (!deleted_.rows) deleted_.rows = std::make_unique<StaticRows>(rows, hidden);
    const std::size_t keyStart = columns - table_.keyColumns.size();
    while (rows.Next()) {
      Row row(columns);
      for (std::size_t i = 0; i < columns; ++i) rows.Read(i, row[i]);
      const bool hasKey = !table_.keyColumns.empty();
      keys_.emplace_back(hasKey ? row.begin() + static_cast<std::ptrdiff_t>(keyStart) : row.begin(),
                         row.end());
      deleted_.rows->Append(std::move(row));
    }
  }

  // The rows from `first` on, which are locked. A statement takes one of a few numbers of keys, the last of
  // which may be repeated, so that there are few statements to prepare.
  void DeleteByKey(const std::string& table, std::size_t first) {
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
      const std::int64_t affected = Session().Execute(ByKey(table, places), parameters);
      if (affected != static_cast<std::int64_t>(count)) {
        throw automation::Error(kRowChanged, "ADODB.Command",
                                "Rows that were locked for deletion could not be found again.");
      }
      first += count;
    }
  }

  std::string ByKey(const std::string& table, std::size_t places) const {
    std::string sql = "DELETE FROM " + table + " WHERE ";
    if (table_.keyColumns.size() == 1) {
      sql += Dialect().QuotedName(table_.keyColumns.front()) + " IN (?";
      for (std::size_t i = 1; i < places; ++i) sql += ",?";
      return sql + ")";
    }
    for (std::size_t i = 0; i < places; ++i) {
      sql += i == 0 ? "(" : " OR (";
      for (std::size_t k = 0; k < table_.keyColumns.size(); ++k) {
        sql += (k == 0 ? "" : " AND ") + Dialect().QuotedName(table_.keyColumns[k]) + "=?";
      }
      sql += ")";
    }
    return sql;
  }

  static constexpr std::size_t kMostKeys = 256;

  Link& link_;
  Deleted wanted_;
  TableShape table_;
  DeletedRows deleted_;
  std::vector<Row> keys_;
};

}  // namespace

DeletedRows RunDelete(Link& link, const Translation& translation, Deleted wanted) {
  Deletion deletion(link, wanted);
  link.GetFreshness().NoteWrite();
  const auto runAll = [&] {
    for (const std::string& piece : translation.statements) deletion.RunPiece(piece);
  };
  if (deletion.NeedsTransaction(translation)) {
    InTransaction(link, runAll);
  } else {
    runAll();
  }
  return deletion.Result();
}

}  // namespace ADODB::engine
