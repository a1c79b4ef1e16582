#include "host/explain/subject.hpp"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>

#include "effects/json_text.hpp"
#include "platform/adodb/sql/dialect.hpp"
#include "platform/automation/error.hpp"
#include "platform/base/text.hpp"

namespace orvane::host {
namespace {

using ADODB::NamedRow;
using ADODB::NamedValue;
using base::EqualsIgnoringAsciiCase;

// What the column holds.
enum class Holds { Customer, Request, Name };

struct Identity {
  std::string_view table;
  std::string_view column;
  Holds holds;
  bool isNumber;
};

constexpr Identity kIdentities[] = {
    {"PROSPECT", "EMAILID", Holds::Customer, false},
    {"PROSPECT", "PROSPECTID", Holds::Customer, true},
    {"QUESTIONS", "EMAILID", Holds::Customer, false},
    {"QUESTIONS", "Q_ORIGINATOR", Holds::Customer, false},
    {"QUESTIONS", "Q_ID", Holds::Request, true},
    {"QUESTIONHISTORY", "EMAILID", Holds::Customer, false},
    {"QUESTIONHISTORY", "Q_ORIGINATOR", Holds::Customer, false},
    {"QUESTIONHISTORY", "Q_ID", Holds::Request, true},
    {"PREVIEW", "Q_ORIGINATOR", Holds::Customer, false},
    {"REMINDER", "Q_ID", Holds::Request, true},
    {"TRANSACTIONS", "Q_ID", Holds::Request, true},
    {"DATAFILES", "ID1", Holds::Request, true},
    {"DATAFILES", "FILENAME", Holds::Name, false},
    {"CHATSESSIONS", "SESSIONID", Holds::Name, false},
};

std::optional<std::int32_t> NumberOf(std::string_view text) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

const NamedValue* ValueOf(const NamedRow& row, std::string_view column) {
  const auto found = std::find_if(row.begin(), row.end(), [column](const NamedValue& value) {
    return EqualsIgnoringAsciiCase(value.column, column);
  });
  return found == row.end() ? nullptr : &*found;
}

class Search {
 public:
  Search(Subject& found, ADODB::engine::Session& session) : found_(found), session_(session) {}

  void Look(const Identity& identity, const automation::Variant& value) {
    const ADODB::engine::Dialect& dialect = session_.GetDialect();
    std::string sql = "SELECT * FROM ";
    sql.append(identity.table).append(" WHERE ").append(identity.column).append(" = ");
    sql += identity.isNumber ? dialect.NumberParameter() : "?";
    try {
      const std::vector<std::string> key = session_.Describe(std::string(identity.table)).primaryKey;
      for (const std::string& column : key) {
        sql += (&column == &key.front() ? " ORDER BY " : ",") + dialect.QuotedName(column);
      }
      const auto rows = session_.Query(sql, {value});
      const auto& columns = rows->Columns();
      while (rows->Next()) {
        SubjectRow row{std::string(identity.table), {}, {}};
        for (std::size_t i = 0; i < columns.size(); ++i) {
          row.row.push_back({dialect.ShownName(columns[i].name), rows->Value(i)});
        }
        for (const std::string& column : key) {
          if (const NamedValue* part = ValueOf(row.row, column)) row.key.push_back(*part);
        }
        if (row.key.empty()) row.key = row.row;
        Keep(std::move(row));
      }
    } catch (const automation::Error& error) {
      const std::string told = std::string(identity.table) + ": " + error.Description();
      auto& tables = found_.notLookedInto;
      if (std::find(tables.begin(), tables.end(), told) == tables.end()) tables.push_back(told);
    }
  }

 private:
  void Keep(SubjectRow row) {
    if (!known_.insert(row.table + '\n' + Joined(row.key)).second) return;
    if (found_.rows.size() == Subject::kMostRows) {
      found_.hasMoreRows = true;
      return;
    }
    found_.rows.push_back(std::move(row));
  }

  Subject& found_;
  ADODB::engine::Session& session_;
  std::set<std::string> known_;
};

}  // namespace

Subject FindRows(const std::string& key, const OrvaneProcess::JobNeeds& needs,
                 ADODB::engine::Session& session) {
  const auto isWorkedOn = [&needs](const Identity& identity) {
    return std::any_of(needs.tables.begin(), needs.tables.end(), [&](const OrvaneProcess::TableNeed& need) {
      return need.database == OrvaneProcess::DatabaseOf::Suite && need.name == identity.table &&
             need.inserts.empty();
    });
  };
  Subject subject;
  subject.key = key;
  Search search(subject, session);
  const std::optional<std::int32_t> number = NumberOf(key);
  for (const Identity& identity : kIdentities) {
    if (!isWorkedOn(identity)) continue;
    if (!identity.isNumber) {
      search.Look(identity, key);
    } else if (number) {
      search.Look(identity, *number);
    }
  }
  // A customer's requests have rows that do not name the customer.
  std::set<std::int32_t> requests;
  for (const SubjectRow& row : subject.rows) {
    if (!row.table.starts_with("QUESTION")) continue;
    const NamedValue* const id = ValueOf(row.row, "Q_ID");
    const auto* const value = id == nullptr ? nullptr : std::get_if<std::int32_t>(&id->value.Get());
    if (value != nullptr && number != *value) requests.insert(*value);
  }
  for (const Identity& identity : kIdentities) {
    if (identity.holds != Holds::Request || !isWorkedOn(identity)) continue;
    for (const std::int32_t request : requests) search.Look(identity, request);
  }
  return subject;
}

std::vector<std::string> FindFiles(const std::string& name, const std::filesystem::path& folder) {
  using Walk = std::filesystem::recursive_directory_iterator;
  std::vector<std::string> files;
  std::error_code failed;
  for (Walk at(folder, std::filesystem::directory_options::skip_permission_denied, failed);
       !failed && at != Walk() && files.size() < Subject::kMostFiles; at.increment(failed)) {
    if (!EqualsIgnoringAsciiCase(at->path().filename().string(), name)) continue;
    std::error_code unknown;
    if (!at->is_directory(unknown)) files.push_back(at->path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool Identifies(std::string_view table, std::string_view column) {
  return std::any_of(std::begin(kIdentities), std::end(kIdentities), [&](const Identity& identity) {
    return identity.table == table && EqualsIgnoringAsciiCase(identity.column, column);
  });
}

std::string Joined(const NamedRow& row) {
  std::string text;
  for (const NamedValue& value : row) {
    effects::AppendJson(text, {{}, value.value, NamedValue::Form::AsTyped});
    text += '\n';
  }
  return text;
}

}  // namespace orvane::host
