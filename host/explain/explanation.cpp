#include "host/explain/explanation.hpp"

#include <algorithm>

#include "platform/adodb/sql/tokens.hpp"

namespace orvane::host {
namespace {

using ADODB::engine::Token;
using ADODB::engine::TokenKind;
using automation::Variant;
using base::EqualsIgnoringAsciiCase;

// The table that the statement selects from; empty where there is none.
std::string TableOf(std::string_view sql) {
  const std::vector<Token> tokens = ADODB::engine::Tokenize(sql).tokens;
  ADODB::engine::TokenReader reader(sql, tokens);
  while (!reader.AtEnd()) {
    if (!reader.Take("from")) {
      reader.Skip();
      continue;
    }
    ADODB::engine::TokenRange name;
    if (!reader.TakeName(name)) return {};
    const Token& last = tokens[name.end - 1];
    return last.kind == TokenKind::QuotedName ? ADODB::engine::Unquoted(last.In(sql))
                                              : std::string(last.In(sql));
  }
  return {};
}

// The value that the statement compares the column with for equality, where it inserts one.
std::optional<std::string> ValueAskedFor(const ADODB::Statement& statement, std::string_view column) {
  for (const auto& [offset, length] : statement.Values()) {
    std::string_view before = base::Trimmed(std::string_view(statement.ToString()).substr(0, offset), " '");
    if (!before.ends_with('=')) continue;
    before = base::Trimmed(before.substr(0, before.size() - 1), " ");
    const std::size_t start = before.find_last_of(" (.,") + 1;  // 0 where there is none
    if (EqualsIgnoringAsciiCase(before.substr(start), column))
      return statement.ToString().substr(offset, length);
  }
  return std::nullopt;
}

// What stands in the statement's last literal.
std::string LastLiteral(std::string_view sql) {
  std::string text;
  for (const Token& token : ADODB::engine::Tokenize(sql).tokens) {
    if (token.kind == TokenKind::Text) text = ADODB::engine::Unquoted(token.In(sql));
  }
  return text;
}

std::vector<std::string> ValuesIn(const ADODB::Statement& statement) {
  std::vector<std::string> values;
  for (const auto& [offset, length] : statement.Values()) {
    const std::string_view value = std::string_view(statement.ToString()).substr(offset, length);
    values.emplace_back(base::Trimmed(value, "'"));
  }
  return values;
}

std::string FixedTextOf(const ADODB::Statement& statement) {
  std::string text;
  std::size_t from = 0;
  for (const auto& [offset, length] : statement.Values()) {
    text.append(statement.ToString(), from, offset - from).append(1, '?');
    from = offset + length;
  }
  return text.append(statement.ToString(), from);
}

std::optional<std::size_t> PlaceOf(const std::vector<std::string>& columns, std::string_view column) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (EqualsIgnoringAsciiCase(columns[i], column)) return i;
  }
  return std::nullopt;
}

std::string_view FileNameOf(std::string_view path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

}  // namespace

// --- What is read ---

class Explanation::SubjectReader final : public effects::SetReader {
 public:
  SubjectReader(Explanation& owner, const Table& table, Asked& asked, const ADODB::Statement& statement,
                const std::vector<std::string>& columns)
      : owner_(owner), table_(table), asked_(asked), statement_(statement.ToString()), columns_(columns) {
    const SubjectRow& first = owner.subject_.rows[table.rows.front()];
    if (first.key.size() == 1) keyAskedFor_ = ValueAskedFor(statement, first.key.front().column);
    asked.asksForKey = keyAskedFor_.has_value();
    if (keyAskedFor_ && owner.values_.contains(*keyAskedFor_)) asked.byKey[*keyAskedFor_] = statement_;
    for (const ADODB::NamedValue& part : first.key) {
      if (const auto place = PlaceOf(columns, part.column)) keyAt_.push_back(*place);
    }
    isByKey_ = keyAt_.size() == first.key.size();
    if (isByKey_) return;
    for (std::size_t i = 0; i < first.row.size(); ++i) {
      const std::string& column = first.row[i].column;
      const auto place = PlaceOf(columns, column);
      if (!place) continue;
      shared_.emplace_back(*place, i);
      isAboutSubject_ = isAboutSubject_ || Identifies(first.table, column);
    }
  }
  ~SubjectReader() override { owner_.standing_.erase(this); }

  void Row(const Values& values, bool anew) override {
    rows_ = RowsAt(values);
    sawSubject_ = (sawSubject_ && !anew) || !rows_.empty();
    for (const std::size_t row : rows_) {
      Reading& reading = asked_.given[row];
      reading.statement = statement_;
      reading.byKey = isByKey_ || keyAskedFor_;
    }
    Stand(!rows_.empty());
  }
  void Taken(std::size_t column) override {
    for (const std::size_t row : rows_) {
      const ADODB::NamedRow& own = owner_.subject_.rows[row].row;
      const bool isOwn = std::any_of(own.begin(), own.end(), [&](const ADODB::NamedValue& value) {
        return EqualsIgnoringAsciiCase(value.column, columns_[column]);
      });
      if (isOwn) asked_.given[row].taken.insert(columns_[column]);
    }
  }
  void NoRow(bool anew) override {
    rows_.clear();
    sawSubject_ = sawSubject_ && !anew;
    Stand(sawSubject_);
  }

 private:
  std::vector<std::size_t> RowsAt(const Values& values) const {
    if (isByKey_) {
      ADODB::NamedRow key;
      for (const std::size_t place : keyAt_) key.push_back({{}, values(place)});
      const auto found = table_.byKey.find(Joined(key));
      if (found == table_.byKey.end()) return {};
      return {found->second};
    }
    std::vector<std::size_t> rows;
    if (shared_.empty() || !(keyAskedFor_ || isAboutSubject_)) return rows;
    std::vector<Variant> shown;
    for (const auto& [place, column] : shared_) shown.push_back(values(place));
    for (const std::size_t row : table_.rows) {
      if (Shows(owner_.subject_.rows[row], shown)) rows.push_back(row);
    }
    return rows;
  }

  bool Shows(const SubjectRow& row, const std::vector<Variant>& shown) const {
    if (keyAskedFor_ && *keyAskedFor_ != automation::ToTextOrEmpty(row.key.front().value)) return false;
    for (std::size_t i = 0; i < shared_.size(); ++i) {
      if (!(row.row[shared_[i].second].value == shown[i])) return false;
    }
    return true;
  }

  void Stand(bool onSubject) {
    if (onSubject) {
      owner_.standing_.insert(this);
    } else {
      owner_.standing_.erase(this);
    }
  }

  Explanation& owner_;
  const Table& table_;
  Asked& asked_;
  const std::string statement_;
  const std::vector<std::string> columns_;
  std::vector<std::size_t> keyAt_;  // columns of the result
  bool isByKey_ = false;
  std::vector<std::pair<std::size_t, std::size_t>> shared_;  // column of the result, column of the row
  bool isAboutSubject_ = false;
  std::optional<std::string> keyAskedFor_;  // by the statement, which then gives no other row
  std::vector<std::size_t> rows_;           // on which the set stands
  bool sawSubject_ = false;                 // since it was opened, or somebody looked for a row
};

class Explanation::ParameterReader final : public effects::SetReader {
 public:
  ParameterReader(Explanation& owner, const std::string& statement, const std::vector<std::string>& columns)
      : owner_(owner),
        name_(PlaceOf(columns, "PARAM_NAME")),
        value_(PlaceOf(columns, "PARAM_VALUE")),
        literal_(LastLiteral(statement)) {}

  void Row(const Values& values, bool) override {
    if (!value_) return;
    const std::string name = name_ ? automation::ToTextOrEmpty(values(*name_)) : literal_;
    owner_.parameters_.try_emplace(name, automation::ToTextOrEmpty(values(*value_)));
  }
  void Taken(std::size_t) override {}
  void NoRow(bool) override {}

 private:
  Explanation& owner_;
  const std::optional<std::size_t> name_;
  const std::optional<std::size_t> value_;
  const std::string literal_;
};

Explanation::Explanation(const Subject& subject) : subject_(subject) {
  for (std::size_t i = 0; i < subject.rows.size(); ++i) {
    const SubjectRow& row = subject.rows[i];
    Table& table = tables_[row.table];
    table.rows.push_back(i);
    table.byKey[Joined(row.key)] = i;
    for (const ADODB::NamedValue& value : row.row) {
      if (Identifies(row.table, value.column)) values_.insert(automation::ToTextOrEmpty(value.value));
    }
  }
  values_.erase("");
  for (const std::string& path : subject.files) files_.push_back({path});
}

Explanation::~Explanation() = default;

std::unique_ptr<effects::SetReader> Explanation::Opened(const ADODB::Statement& statement,
                                                        const std::vector<std::string>& columns) {
  if (hasEnded_) return nullptr;  // the preview's own count of what is left
  const std::string name = TableOf(statement.ToString());
  if (EqualsIgnoringAsciiCase(name, "PARAMETERS")) {
    return std::make_unique<ParameterReader>(*this, statement.ToString(), columns);
  }
  const Table* const table = TableNamed(name);
  if (table == nullptr) return nullptr;
  const auto [at, isNew] = asked_.try_emplace(FixedTextOf(statement));
  Asked& asked = at->second;
  if (isNew) inOrder_.push_back(&asked);
  ++asked.count;
  asked.table = name;
  const std::vector<std::string> values = ValuesIn(statement);
  const auto named = static_cast<std::size_t>(std::count_if(
      values.begin(), values.end(), [this](const std::string& value) { return values_.contains(value); }));
  if (isNew || named > asked.named) {
    asked.text = statement.ToString();
    asked.named = named;
  }
  return std::make_unique<SubjectReader>(*this, *table, asked, statement, columns);
}

bool Explanation::Wants(std::string_view fileName) const {
  return EqualsIgnoringAsciiCase(fileName, subject_.key);
}

const Explanation::Table* Explanation::TableNamed(std::string_view name) const {
  const auto found = tables_.find(name);
  return found == tables_.end() ? nullptr : &found->second;
}

FileStory& Explanation::FileAt(const std::string& path) {
  std::string native = path;
  std::replace(native.begin(), native.end(), '\\', '/');
  for (FileStory& file : files_) {
    if (EqualsIgnoringAsciiCase(file.path, native)) return file;
  }
  return files_.emplace_back(FileStory{native});
}

std::vector<Reading> Explanation::ReadingsOf(std::size_t row) const {
  std::vector<Reading> readings;
  for (const Asked* asked : inOrder_) {
    if (!EqualsIgnoringAsciiCase(asked->table, subject_.rows[row].table)) continue;
    const auto found = asked->given.find(row);
    if (found != asked->given.end()) readings.push_back(found->second);
  }
  return readings;
}

std::vector<std::string> Explanation::StatementsWithout(std::size_t row) const {
  std::vector<std::string> statements;
  for (const Asked* asked : inOrder_) {
    if (!EqualsIgnoringAsciiCase(asked->table, subject_.rows[row].table)) continue;
    if (asked->given.contains(row)) continue;
    if (asked->asksForKey) {
      const auto found = asked->byKey.find(automation::ToTextOrEmpty(subject_.rows[row].key.front().value));
      if (found != asked->byKey.end()) statements.push_back(found->second);
      continue;
    }
    // What was asked of others again and again says nothing of this row.
    if (asked->count == 1 || asked->named > 0) statements.push_back(asked->text);
  }
  return statements;
}

// --- What is done ---

void Explanation::OnEntry(const effects::EntryPtr& entry) {
  if (const auto* failure = std::get_if<effects::Failure>(&entry->what)) return HearFailure(*failure);
  if (const auto* log = std::get_if<effects::LogText>(&entry->what)) {
    if (++textCount_ <= kMostTexts) texts_.push_back(*log);
    return;
  }
  if (std::holds_alternative<effects::RunEnd>(entry->what)) hasEnded_ = true;
  const auto* effect = std::get_if<effects::Effect>(&entry->what);
  if (effect == nullptr) return;
  if (const auto* step = std::get_if<effects::TransactionStep>(effect)) return Transaction(step->kind);
  if (auto deed = DeedOf(entry)) deeds_.push_back(std::move(*deed));
}

std::optional<Deed> Explanation::DeedOf(const effects::EntryPtr& entry) const {
  const auto& effect = std::get<effects::Effect>(entry->what);
  Deed deed{entry, {}, {}, {}};
  if (const auto* change = std::get_if<effects::RowChange>(&effect)) {
    if (const auto row = RowOf(change->table, change->key)) {
      deed.rows.push_back(*row);
    } else if (!StandsOnSubject()) {
      return std::nullopt;
    }
    return deed;
  }
  if (const auto* changes = std::get_if<effects::RowsChange>(&effect)) {
    effects::RowsChange own{changes->change, changes->table, {}, changes->tellsBefore, {}};
    for (std::size_t i = 0; i < changes->keys.size(); ++i) {
      const auto row = RowOf(changes->table, changes->keys[i]);
      if (!row) continue;
      deed.rows.push_back(*row);
      own.keys.push_back(changes->keys[i]);
      if (changes->tellsBefore) own.before.push_back(changes->before[i]);
    }
    if (deed.rows.empty()) return std::nullopt;
    deed.entry = std::make_shared<effects::Entry>(
        effects::Entry{entry->seq, entry->time, effects::Effect(std::move(own))});
    return deed;
  }
  if (StandsOnSubject() || NamesFile(effect)) return deed;
  return std::nullopt;
}

std::optional<std::size_t> Explanation::RowOf(const std::string& table, const ADODB::NamedRow& key) const {
  const Table* const rows = TableNamed(table);
  if (rows == nullptr) return std::nullopt;
  const auto found = rows->byKey.find(Joined(key));
  return found == rows->byKey.end() ? std::nullopt : std::optional(found->second);
}

bool Explanation::NamesFile(const effects::Effect& effect) const {
  if (const auto* file = std::get_if<effects::FileChange>(&effect)) return Wants(FileNameOf(file->path));
  if (const auto* shared = std::get_if<effects::SharedChange>(&effect))
    return Wants(FileNameOf(shared->name)) || Wants(FileNameOf(shared->path));
  return false;
}

void Explanation::Transaction(effects::TransactionStep::Kind kind) {
  using Kind = effects::TransactionStep::Kind;
  if (kind == Kind::Begin) firstOfTransaction_ = deeds_.size();
  if (kind != Kind::Rollback) return;
  for (std::size_t i = firstOfTransaction_; i < deeds_.size(); ++i) {
    const auto& effect = std::get<effects::Effect>(deeds_[i].entry->what);
    const bool isOfRows = std::holds_alternative<effects::RowChange>(effect) ||
                          std::holds_alternative<effects::RowsChange>(effect);
    if (isOfRows && deeds_[i].outcome == Deed::Outcome::Done) deeds_[i].outcome = Deed::Outcome::Undone;
  }
  firstOfTransaction_ = deeds_.size();
}

void Explanation::HearFailure(const effects::Failure& failure) {
  for (auto deed = deeds_.rbegin(); deed != deeds_.rend(); ++deed) {
    if (deed->entry->seq != failure.of->seq) continue;
    deed->outcome = failure.error.Outcome() == automation::Outcome::Unknown ? Deed::Outcome::Unknown
                                                                            : Deed::Outcome::Failed;
    deed->error = failure.error.Description() + " (" + std::to_string(failure.error.Number()) + ")";
    return;
  }
}

}  // namespace orvane::host
