#include "platform/adodb/sql/select_shape.hpp"

#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {
namespace {

class Reader {
 public:
  explicit Reader(std::string_view sql) : sql_(sql), list_(Tokenize(sql)), tokens_(list_.tokens) {}

  bool Read(SelectShape& shape) {
    if (!Take("select")) return false;
    const std::size_t listBegin = at_;
    if (!ReadList()) return false;
    shape.list = Between(listBegin, at_);
    if (!Take("from") || !ReadTable(shape)) return false;
    if (Take("where")) {
      const std::size_t begin = at_;
      if (!SkipCondition()) return false;
      shape.condition = Between(begin, at_);
    }
    if (IsAt("order")) {
      const std::size_t begin = at_;
      if (!SkipCondition() && at_ == begin) return false;
      shape.order = Between(begin, at_);
    }
    return at_ == tokens_.size();
  }

 private:
  bool IsAt(std::string_view lowerCase) const {
    return at_ < tokens_.size() && Is(sql_, tokens_[at_], lowerCase);
  }
  bool Take(std::string_view lowerCase) {
    if (!IsAt(lowerCase)) return false;
    ++at_;
    return true;
  }
  bool AtName() const {
    return at_ < tokens_.size() &&
           (tokens_[at_].kind == TokenKind::Word || tokens_[at_].kind == TokenKind::QuotedName);
  }
  std::string Between(std::size_t begin, std::size_t end) const {
    if (begin == end) return {};
    return std::string(sql_.substr(tokens_[begin].offset, tokens_[end - 1].End() - tokens_[begin].offset));
  }

  // Plain columns, with or without an alias, and "*".
  bool ReadList() {
    if (IsAt("distinct") || IsAt("all") || IsAt("top")) return false;
    const std::size_t begin = at_;
    for (; at_ < tokens_.size() && !IsAt("from"); ++at_) {
      if (!AtName() && !IsAt("*") && !IsAt(".") && !IsAt(",")) return false;
      if (IsAt("case")) return false;
    }
    return at_ > begin;
  }

  bool ReadTable(SelectShape& shape) {
    const std::size_t begin = at_;
    if (!AtName()) return false;
    ++at_;
    while (Take(".")) {
      if (!AtName()) return false;
      ++at_;
    }
    shape.table = shape.name = Between(begin, at_);
    const bool as = Take("as");
    if (as && !AtName()) return false;
    if (as || (AtName() && !IsAt("where") && !IsAt("order"))) {
      for (const std::string_view word :
           {"join", "inner", "left", "right", "cross", "natural", "full", "group", "having", "union", "limit",
            "except", "intersect", "for", "offset", "with"}) {
        if (IsAt(word)) return false;
      }
      shape.name = Between(at_, at_ + 1);
      ++at_;
    }
    return at_ == tokens_.size() || IsAt("where") || IsAt("order");
  }

  // To the next clause outside brackets; false when that clause makes more of the statement than its rows.
  bool SkipCondition() {
    std::size_t depth = 0;
    const std::size_t begin = at_;
    for (; at_ < tokens_.size(); ++at_) {
      if (IsAt("(")) ++depth;
      if (IsAt(")") && depth-- == 0) return false;
      if (depth > 0) continue;
      if (IsAt("order") && at_ > begin) return true;
      for (const std::string_view word :
           {"group", "having", "union", "limit", "except", "intersect", "for", "window"}) {
        if (IsAt(word)) return false;
      }
    }
    return at_ > begin;
  }

  std::string_view sql_;
  TokenList list_;
  const std::vector<Token>& tokens_;
  std::size_t at_ = 0;
};

}  // namespace

std::string SelectShape::From(std::string_view extraCondition) const {
  std::string sql = " FROM " + table;
  if (name != table) sql += " " + name;
  if (condition.empty() && extraCondition.empty()) return sql;
  sql += " WHERE ";
  if (!condition.empty()) sql += "(" + condition + ")";
  if (!condition.empty() && !extraCondition.empty()) sql += " AND ";
  if (!extraCondition.empty()) sql += extraCondition;
  return sql;
}

std::string ListWithKey(const SelectShape& select, const TableShape& table, const Dialect& dialect) {
  std::string list = select.list;
  for (const std::string& column : table.keyColumns) {
    list += "," + select.name + "." + dialect.QuotedName(column);
  }
  return list;
}

bool ReadSelect(std::string_view sql, SelectShape& shape) {
  shape = {};
  return Reader(sql).Read(shape);
}

}  // namespace ADODB::engine
