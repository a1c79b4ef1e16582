#include "platform/adodb/sql/or_chain.hpp"

namespace ADODB::engine {
namespace {

struct Equality {
  std::string_view column;
  std::string_view literal;  // with its sign
};

class TermReader {
 public:
  TermReader(std::string_view sql, const std::vector<Token>& tokens) : sql_(sql), tokens_(tokens) {}

  // Reads "[(] A = 1 AND B = 'x' ... [)]"; false for anything else.
  bool Read(std::pair<std::size_t, std::size_t> range, std::vector<Equality>& equalities) const {
    auto [at, end] = range;
    equalities.clear();
    while (end - at >= 2 && Is(sql_, tokens_[at], "(") && Is(sql_, tokens_[end - 1], ")")) ++at, --end;
    for (;;) {
      Equality equality;
      if (!ReadColumn(at, end, equality.column)) return false;
      if (at >= end || !Is(sql_, tokens_[at++], "=")) return false;
      if (!ReadLiteral(at, end, equality.literal)) return false;
      equalities.push_back(equality);
      if (at == end) return true;
      if (!Is(sql_, tokens_[at++], "and")) return false;
    }
  }

 private:
  bool ReadColumn(std::size_t& at, std::size_t end, std::string_view& column) const {
    const std::size_t first = at;
    for (;;) {
      if (at >= end) return false;
      const TokenKind kind = tokens_[at].kind;
      if (kind != TokenKind::Word && kind != TokenKind::QuotedName) return false;
      ++at;
      if (at >= end || !Is(sql_, tokens_[at], ".")) break;
      ++at;
    }
    column = sql_.substr(tokens_[first].offset, tokens_[at - 1].End() - tokens_[first].offset);
    return true;
  }

  bool ReadLiteral(std::size_t& at, std::size_t end, std::string_view& literal) const {
    if (at >= end) return false;
    const std::size_t first = at;
    if (tokens_[at].kind == TokenKind::Text) {
      ++at;
    } else {
      if (Is(sql_, tokens_[at], "-") || Is(sql_, tokens_[at], "+")) ++at;
      if (at >= end || tokens_[at].kind != TokenKind::Number) return false;
      ++at;
    }
    literal = sql_.substr(tokens_[first].offset, tokens_[at - 1].End() - tokens_[first].offset);
    return true;
  }

  std::string_view sql_;
  const std::vector<Token>& tokens_;
};

// The literals of `equalities` in the order of `columns`; false when the columns are not the same set.
bool InOrder(const std::vector<std::string_view>& columns, const std::vector<Equality>& equalities,
             std::vector<std::string_view>& literals) {
  if (columns.size() != equalities.size()) return false;
  literals.assign(columns.size(), {});
  for (std::size_t i = 0; i < equalities.size(); ++i) {
    // Terms name their columns in the same order nearly always.
    std::size_t place = i;
    if (!EqualsIgnoringAsciiCase(columns[i], equalities[i].column)) {
      for (place = 0; place < columns.size(); ++place) {
        if (EqualsIgnoringAsciiCase(columns[place], equalities[i].column)) break;
      }
      if (place == columns.size()) return false;
    }
    if (!literals[place].empty()) return false;
    literals[place] = equalities[i].literal;
  }
  return true;
}

}  // namespace

// Words that may bind their neighbours in another way than AND and OR do.
constexpr std::string_view kBinding[] = {"case",  "select",  "order",     "group",  "having",    "union",
                                         "limit", "between", "returning", "except", "intersect", "not"};

OrChain FindOrChain(std::string_view sql, const std::vector<Token>& tokens) {
  OrChain chain;
  std::size_t depth = 0;
  bool found = false;
  std::size_t termStart = 0;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    if (Is(sql, token, "(")) {
      ++depth;
    } else if (Is(sql, token, ")")) {
      if (depth == 0) return {};
      --depth;
    } else if (token.kind != TokenKind::Word) {
      continue;
    } else if (depth == 0 && Is(sql, token, "where")) {
      if (found) return {};
      found = true;
      chain.begin = termStart = i + 1;
    } else if (found) {
      for (const std::string_view word : kBinding) {
        if (Is(sql, token, word)) return {};
      }
      if (depth == 0 && Is(sql, token, "or")) {
        chain.terms.emplace_back(termStart, i);
        termStart = i + 1;
      }
    }
  }
  if (!found || depth != 0) return {};
  chain.terms.emplace_back(termStart, tokens.size());
  for (const auto& [begin, end] : chain.terms) {
    if (begin == end) return {};
  }
  return chain;
}

std::string AsRowValueList(std::string_view sql, const std::vector<Token>& tokens, const OrChain& chain,
                           std::string_view start) {
  const TermReader reader(sql, tokens);
  std::vector<Equality> equalities;
  std::vector<std::string_view> columns;
  std::vector<std::string_view> literals;
  std::string list;
  for (const auto& term : chain.terms) {
    if (!reader.Read(term, equalities)) return {};
    if (columns.empty()) {
      for (const Equality& equality : equalities) columns.push_back(equality.column);
    }
    if (!InOrder(columns, equalities, literals)) return {};
    list += list.empty() ? "(" : ",(";
    for (std::size_t i = 0; i < literals.size(); ++i) {
      if (i > 0) list += ',';
      list += literals[i];
    }
    list += ')';
  }
  std::string text = columns.size() > 1 ? "(" : "";
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) text += ',';
    text += columns[i];
  }
  text += columns.size() > 1 ? ") IN (" : " IN (";
  text += start;
  text += list;
  text += ')';
  return text;
}

}  // namespace ADODB::engine
