#include "platform/adodb/engines/mariadb/dialect.hpp"

#include "platform/adodb/sql/collation_key.hpp"
#include "platform/adodb/sql/engine_error.hpp"

namespace ADODB::engine {
namespace {

constexpr Dialect::SessionLockTexts kSessionLock = {
    .take = "SELECT GET_LOCK(concat('orvane suite ', database()), 0)",
    .isHeld = "SELECT coalesce(IS_USED_LOCK(concat('orvane suite ', database())) = CONNECTION_ID(), 0)",
    .holder =
        "SELECT concat('database session ', p.ID, ' of ', p.USER, ' from ', p.HOST)"
        " FROM information_schema.PROCESSLIST p"
        " WHERE p.ID = IS_USED_LOCK(concat('orvane suite ', database()))",
    .introduce = {},
};

class MariaDb : public Dialect {
 public:
  std::string_view Name() const override { return "MariaDB"; }
  const SessionLockTexts* SessionLock() const override { return &kSessionLock; }

  std::string_view BoundLockWaits() const override {
    return "SET SESSION innodb_lock_wait_timeout = 10, lock_wait_timeout = 10";
  }
  std::string BoundStatements(std::chrono::seconds longest) const override {
    return "SET SESSION max_statement_time = " + std::to_string(longest.count());
  }
  // Where a trigger could reach one, every table with a trigger counts as one.
  std::string_view TablesWithoutTransactions() const override {
    return "WITH plain AS (SELECT t.TABLE_NAME AS name FROM information_schema.TABLES t"
           " LEFT JOIN information_schema.ENGINES e ON e.ENGINE = t.ENGINE"
           " WHERE t.TABLE_SCHEMA = database() AND t.TABLE_TYPE = 'BASE TABLE'"
           " AND coalesce(e.TRANSACTIONS, 'NO') <> 'YES')"
           " SELECT name FROM plain UNION SELECT g.EVENT_OBJECT_TABLE FROM information_schema.TRIGGERS g"
           " WHERE g.TRIGGER_SCHEMA = database() AND EXISTS (SELECT 1 FROM plain)";
  }
  bool MeansLocked(const automation::Error& error) const override {
    constexpr std::int32_t kWaitedTooLong = 1205;
    constexpr std::int32_t kDeadlock = 1213;
    return error.NativeCode() == kWaitedTooLong || error.NativeCode() == kDeadlock;
  }

  std::string DaysLater(std::string_view days, std::string_view moment) const override {
    std::string sql = "(";
    return sql.append(moment).append(" + interval (").append(days).append(") day)");
  }

  std::string NullReplaced(std::string_view value, std::string_view replacement) const override {
    return Call("coalesce", value, replacement);
  }

  // "+" would add the strings as numbers, and "||" depends on the session's mode.
  std::string Joined(const std::vector<std::string>& operands) const override {
    return "concat" + Chained(operands, ",");
  }

  bool NamesTableTwiceInDeletes() const override { return true; }
  bool OrdersLongTextsOnDisk() const override { return true; }

  bool ReturnsDeletedRows() const override { return true; }

  // A statement is planned with the values of its parameters in their places, each time that it runs.
  bool ComparesBoundValuesAsLiterals() const override { return true; }
  bool PreparesOnTheServer() const override { return true; }

  // A typed literal: a plain text would be compared as text with some expressions.
  std::string Timestamp(std::string_view text) const override {
    return "timestamp'" + std::string(text) + "'";
  }

  // Backquotes are names in every mode of a session.
  std::string QuotedName(std::string_view name) const override { return Enclosed(name, '`', '`'); }

  std::string InsertReturning(std::string_view table, const std::vector<std::string>& columns,
                              const std::vector<std::string>& returned) const override {
    if (!columns.empty()) return Dialect::InsertReturning(table, columns, returned);
    return "INSERT INTO " + std::string(table) + " () VALUES ()" + Listed(" RETURNING ", "", returned);
  }

  // By the bytes of the text, whatever the column's collation takes for equal. A zero date reads as NULL. A
  // FLOAT reads as the number that it is or as that of its shorter text, as the driver fetches it.
  std::string StillReads(const std::string& column, ColumnType type) const override {
    switch (type) {
      case ColumnType::Boolean:
      case ColumnType::Integer:
        return column + " <=> ?";
      case ColumnType::Decimal:
      case ColumnType::Double:
        return "(" + column + " <=> ? OR concat(" + column + ") + 0e0 <=> ?)";
      case ColumnType::DateTime:
        return "if(year(" + column + ") > 0 AND month(" + column + ") > 0 AND dayofmonth(" + column +
               ") > 0, " + column + ", NULL) <=> ?";
      case ColumnType::Text:
        return "convert(" + column + " USING utf8mb4) COLLATE utf8mb4_nopad_bin <=> convert(? USING utf8mb4)";
      case ColumnType::Binary:
        break;
    }
    return "hex(" + column + ") <=> ?";
  }

  // After VALUES the first row's values would be names of columns, which must differ: a row (1,1) is refused.
  std::string_view RowValueListStart() const override { return {}; }

  // By the end of a collation's name: "_bin" compares characters, everything else sees letters of different
  // case as equal; trailing spaces do not count unless it says "nopad". Without a name strings are compared
  // as they are.
  std::string ComparisonKey(std::string_view text, const Column& column) const override {
    const std::string_view collation = column.collation;
    if (collation.empty() || collation == "binary") return std::string(text);
    const bool letterForLetter = collation.ends_with("_bin") || collation.ends_with("_cs");
    std::string key = letterForLetter ? std::string(text) : WithoutCaseAndAccents(text);
    if (collation.find("_nopad_") == std::string_view::npos) {
      while (!key.empty() && key.back() == ' ') key.pop_back();
    }
    return key;
  }

  automation::Error SyntaxError(std::string_view near) const override {
    return EngineError(
        "MSDASQL",
        "You have an error in your SQL syntax; check the manual that corresponds to your MariaDB "
        "server version for the right syntax to use near '" +
            std::string(near) + "' at line 1",
        "42000", 1064);
  }
};

}  // namespace

const Dialect& MariaDbDialect() {
  static const MariaDb dialect;
  return dialect;
}

}  // namespace ADODB::engine
