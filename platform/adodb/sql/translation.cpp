#include "platform/adodb/sql/translation.hpp"

#include <algorithm>

#include "platform/adodb/sql/change_shape.hpp"
#include "platform/adodb/sql/engine_error.hpp"
#include "platform/adodb/sql/or_chain.hpp"
#include "platform/automation/iso_text.hpp"
#include "platform/automation/runtime.hpp"

namespace ADODB::engine {
namespace {

constexpr std::size_t kLongChain = 100;
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// Words that begin no operand.
constexpr std::string_view kKeywords[] = {
    "select", "distinct", "all",    "where",  "and",   "or",    "not",   "in",    "from",   "on",
    "by",     "values",   "then",   "else",   "when",  "case",  "end",   "as",    "having", "set",
    "like",   "between",  "is",     "exists", "union", "order", "group", "limit", "top",    "into",
    "insert", "update",   "delete", "any",    "some",  "join",  "escape"};

// Where a token stands in the translated text.
struct Place {
  std::size_t begin = 0;
  std::size_t end = 0;
};

class Translator {
 public:
  Translator(std::string_view sql, const std::vector<Token>& tokens, const Dialect& dialect)
      : sql_(sql), tokens_(tokens), dialect_(dialect), partner_(tokens.size(), kNone) {
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
      if (Is(sql, tokens[i], "(")) open.push_back(i);
      if (Is(sql, tokens[i], ")") && !open.empty()) {
        partner_[open.back()] = i;
        open.pop_back();
      }
    }
  }

  bool UsesLocale() const { return usesLocale_; }

  // The tokens from `begin` up to `end`, with what stands between them but not before the first. `places` is
  // told where the first and the last token of each piece that is rendered as one stand in the result.
  std::string Render(std::size_t begin, std::size_t end, std::vector<Place>* places = nullptr) {
    std::string out;
    std::size_t at = begin;
    while (at < end) {
      Gap(begin, at, out);
      const std::size_t first = at;
      const std::size_t start = out.size();
      at = RenderNext(at, end, out);
      if (places == nullptr) continue;
      (*places)[first].begin = start;
      (*places)[at - 1].end = out.size();
    }
    return out;
  }

 private:
  struct Operand {
    std::size_t begin;
    std::size_t end;
  };

  bool IsToken(std::size_t index, std::size_t end, std::string_view lowerCase) const {
    return index < end && Is(sql_, tokens_[index], lowerCase);
  }

  // White space and comments in front of a token.
  void Gap(std::size_t begin, std::size_t at, std::string& out) const {
    if (at > begin) out += sql_.substr(tokens_[at - 1].End(), tokens_[at].offset - tokens_[at - 1].End());
  }

  std::size_t RenderNext(std::size_t at, std::size_t end, std::string& out) {
    if (OperandEnd(at, end) == at) {
      out += tokens_[at].In(sql_);
      return at + 1;
    }
    std::vector<Operand>& chain = Chain(at, end);
    const std::size_t chainEnd = chain.back().end;
    if (chain.size() > 1 && IsTextChain(chain, at, end)) {
      const std::vector<Operand> operands = chain;
      std::vector<std::string> texts;
      texts.reserve(operands.size());
      for (const Operand& operand : operands) texts.push_back(RenderOperand(operand));
      out += dialect_.Joined(texts);
      return chainEnd;
    }
    const Operand first = chain.front();
    if (IsDateAdd(first)) return RenderComparison(first, end, out);
    if (tokens_[at].kind == TokenKind::Text && ComparedDateAdd(at, end)) {
      out += LocalDate(at);
      return at + 1;
    }
    if (const Operand other = OtherSide(first, end); other.end > other.begin) {
      const bool literalFirst = IsTimestamp(first.begin, first.end);
      out += literalFirst ? RenderOperand(first) : dialect_.ComparedMoment(RenderOperand(first));
      Gap(0, first.end, out);
      out += tokens_[first.end].In(sql_);
      Gap(0, other.begin, out);
      out += literalFirst ? dialect_.ComparedMoment(RenderOperand(other)) : RenderOperand(other);
      return other.end;
    }
    out += RenderOperand(first);
    return first.end;
  }

  // What an operand is compared with, when one of the two is a {ts '...'}; nothing otherwise.
  Operand OtherSide(const Operand& operand, std::size_t end) const {
    if (!IsComparison(operand.end, end)) return {};
    const std::size_t next = operand.end + 1;
    const Operand other{next, OperandEnd(next, end)};
    const bool moment = IsTimestamp(operand.begin, operand.end) || IsTimestamp(other.begin, other.end);
    return moment ? other : Operand{};
  }

  // Operands joined by "+", from `at`. The vector is the translator's own, reused from call to call.
  std::vector<Operand>& Chain(std::size_t at, std::size_t end) {
    chain_.assign(1, {at, OperandEnd(at, end)});
    while (IsToken(chain_.back().end, end, "+")) {
      const std::size_t next = chain_.back().end + 1;
      const std::size_t nextEnd = OperandEnd(next, end);
      if (nextEnd == next) break;
      chain_.push_back({next, nextEnd});
    }
    return chain_;
  }

  // Where an operand that begins at `at` ends: a literal, a name, a call, a bracket or {ts '...'}. `at`
  // itself when none begins there.
  std::size_t OperandEnd(std::size_t at, std::size_t end) const {
    if (at >= end) return at;
    const Token& token = tokens_[at];
    if (token.kind == TokenKind::Text || token.kind == TokenKind::Number) return at + 1;
    if (token.kind == TokenKind::Symbol) {
      if (Is(sql_, token, "(") && partner_[at] != kNone && partner_[at] < end) return partner_[at] + 1;
      if (IsTimestamp(at, end)) return at + 4;
      return at;
    }
    if (token.kind == TokenKind::Word && IsKeyword(token)) return at;
    std::size_t last = at + 1;
    while (IsToken(last, end, ".") && last + 1 < end &&
           (tokens_[last + 1].kind == TokenKind::Word || tokens_[last + 1].kind == TokenKind::QuotedName)) {
      last += 2;
    }
    if (IsToken(last, end, "(") && partner_[last] != kNone && partner_[last] < end) return partner_[last] + 1;
    return last;
  }

  bool IsKeyword(const Token& token) const {
    for (const std::string_view word : kKeywords) {
      if (Is(sql_, token, word)) return true;
    }
    return false;
  }

  bool IsTimestamp(std::size_t at, std::size_t end) const {
    return IsToken(at, end, "{") && IsToken(at + 1, end, "ts") && at + 2 < end &&
           tokens_[at + 2].kind == TokenKind::Text && IsToken(at + 3, end, "}");
  }

  // The arguments of a call `name(...)` that fills the operand; none when it is no such call.
  std::vector<Operand> Arguments(const Operand& operand, std::string_view name, std::size_t count) const {
    if (!IsToken(operand.begin, operand.end, name) || !IsToken(operand.begin + 1, operand.end, "(") ||
        partner_[operand.begin + 1] != operand.end - 1) {
      return {};
    }
    std::vector<Operand> arguments;
    std::size_t start = operand.begin + 2;
    for (std::size_t i = start; i < operand.end; ++i) {
      if (IsToken(i, operand.end, "(") && partner_[i] != kNone) {
        i = partner_[i];
      } else if (IsToken(i, operand.end, ",") || i == operand.end - 1) {
        if (i == start) return {};
        arguments.push_back({start, i});
        start = i + 1;
      }
    }
    if (arguments.size() != count) return {};
    return arguments;
  }

  bool IsDateAdd(const Operand& operand) const {
    const std::vector<Operand> arguments = Arguments(operand, "dateadd", 3);
    return !arguments.empty() && arguments[0].end - arguments[0].begin == 1 &&
           (IsToken(arguments[0].begin, operand.end, "d") || IsToken(arguments[0].begin, operand.end, "dd") ||
            IsToken(arguments[0].begin, operand.end, "day"));
  }

  bool IsText(const Operand& operand) const {
    return operand.end - operand.begin == 1 && tokens_[operand.begin].kind == TokenKind::Text;
  }

  // "+" joins texts when an operand shows that it is one, and nothing around binds tighter or equally.
  bool IsTextChain(const std::vector<Operand>& chain, std::size_t at, std::size_t end) const {
    for (const std::string_view symbol : {"+", "-", "*", "/", "%", "||"}) {
      if (at > 0 && Is(sql_, tokens_[at - 1], symbol)) return false;
      if (IsToken(chain.back().end, end, symbol)) return false;
    }
    for (const Operand& operand : chain) {
      if (IsText(operand)) return true;
      const std::vector<Operand> arguments = Arguments(operand, "isnull", 2);
      if (!arguments.empty() && IsText(arguments[1])) return true;
    }
    return false;
  }

  bool IsComparison(std::size_t at, std::size_t end) const {
    for (const std::string_view symbol : {"<", ">", "=", "<=", ">=", "<>"}) {
      if (IsToken(at, end, symbol)) return true;
    }
    return false;
  }

  bool ComparedDateAdd(std::size_t at, std::size_t end) const {
    if (!IsComparison(at + 1, end)) return false;
    const std::size_t next = at + 2;
    return IsDateAdd({next, OperandEnd(next, end)});
  }

  // A dateadd, and the text that it is compared with where there is one.
  std::size_t RenderComparison(const Operand& dateAdd, std::size_t end, std::string& out) {
    out += RenderOperand(dateAdd);
    const std::size_t text = dateAdd.end + 1;
    if (!IsComparison(dateAdd.end, end) || text >= end || tokens_[text].kind != TokenKind::Text)
      return dateAdd.end;
    Gap(0, dateAdd.end, out);
    out += tokens_[dateAdd.end].In(sql_);
    Gap(0, text, out);
    out += LocalDate(text);
    return text + 1;
  }

  std::string LocalDate(std::size_t at) {
    usesLocale_ = true;
    const std::string text = Unquoted(tokens_[at].In(sql_));
    try {
      return dialect_.Timestamp(automation::IsoText(automation::CurrentLocale().ParseDateTime(text)));
    } catch (const automation::Error& error) {
      if (error.Number() != static_cast<std::int32_t>(automation::ErrorNumber::TypeMismatch)) throw;
      throw EngineError(
          std::string(dialect_.Name()),
          "Conversion failed when converting date and/or time from character string '" + text + "'.", "22007",
          0);
    }
  }

  std::string RenderOperand(const Operand& operand) {
    if (IsTimestamp(operand.begin, operand.end)) {
      return dialect_.Timestamp(Unquoted(tokens_[operand.begin + 2].In(sql_)));
    }
    if (const auto arguments = Arguments(operand, "isnull", 2); !arguments.empty()) {
      return dialect_.NullReplaced(Render(arguments[0].begin, arguments[0].end),
                                   Render(arguments[1].begin, arguments[1].end));
    }
    if (IsDateAdd(operand)) {
      const std::vector<Operand> arguments = Arguments(operand, "dateadd", 3);
      return dialect_.DaysLater(Render(arguments[1].begin, arguments[1].end),
                                Render(arguments[2].begin, arguments[2].end));
    }
    // A bracket or a call is copied with its inside rendered, anything else as it is.
    std::string out;
    for (std::size_t i = operand.begin; i < operand.end; ++i) {
      Gap(operand.begin, i, out);
      out += tokens_[i].In(sql_);
      if (!IsToken(i, operand.end, "(") || partner_[i] == kNone) continue;
      if (partner_[i] > i + 1) {
        Gap(operand.begin, i + 1, out);
        out += Render(i + 1, partner_[i]);
      }
      i = partner_[i];
      Gap(operand.begin, i, out);
      out += tokens_[i].In(sql_);
    }
    return out;
  }

  std::string_view sql_;
  const std::vector<Token>& tokens_;
  const Dialect& dialect_;
  std::vector<std::size_t> partner_;  // index of the closing bracket for an opening one
  std::vector<Operand> chain_;
  bool usesLocale_ = false;
};

constexpr std::string_view kRowWords[] = {"select", "with", "values", "pragma", "explain", "show"};

bool YieldsRows(std::string_view sql, const std::vector<Token>& tokens) {
  const auto first =
      std::find_if(tokens.begin(), tokens.end(), [&](const Token& token) { return !Is(sql, token, "("); });
  return first != tokens.end() && std::any_of(std::begin(kRowWords), std::end(kRowWords),
                                              [&](std::string_view word) { return Is(sql, *first, word); });
}

// The words of the select list.
std::vector<std::string> SelectedNames(std::string_view sql, const std::vector<Token>& tokens) {
  std::vector<std::string> names;
  for (const Token& token : tokens) {
    if (Is(sql, token, "from")) break;
    if (token.kind == TokenKind::Word) names.emplace_back(token.In(sql));
  }
  return names;
}

// Renders the statement. A condition of many terms becomes one list of row values where it can.
std::string Rendered(Translator& translator, std::string_view sql, const std::vector<Token>& tokens,
                     const Dialect& dialect, std::vector<Place>& places) {
  const OrChain chain = tokens.size() > kLongChain ? FindOrChain(sql, tokens) : OrChain();
  if (chain.terms.size() > kLongChain) {
    const std::string list = AsRowValueList(sql, tokens, chain, dialect.RowValueListStart());
    if (!list.empty()) {
      std::string text = translator.Render(0, chain.begin, &places) + " ";
      places[chain.begin].begin = text.size();
      text += list;
      places.back().end = text.size();
      return text;
    }
  }
  return translator.Render(0, tokens.size(), &places);
}

}  // namespace

Translation Translate(const CheckedStatement& checked, const Dialect& dialect) {
  const std::string_view sql = checked.sql;
  const std::vector<Token>& tokens = checked.list.tokens;
  Translation translation;
  std::vector<Place> places(tokens.size());
  if (dialect.TakesTextUnchanged()) {
    translation.text = sql;
    for (std::size_t i = 0; i < tokens.size(); ++i) places[i] = {tokens[i].offset, tokens[i].End()};
  } else {
    Translator translator(sql, tokens, dialect);
    translation.text = Rendered(translator, sql, tokens, dialect, places);
    translation.usesLocale = translator.UsesLocale();
  }
  const auto part = [&](TokenRange range) {
    if (range.begin == range.end) return std::string();
    const std::size_t begin = places[range.begin].begin;
    return translation.text.substr(begin, places[range.end - 1].end - begin);
  };
  translation.onlyReads = OnlyReads(sql, tokens);
  translation.yieldsRows = YieldsRows(sql, tokens);
  if (const auto select = ReadSelect(sql, tokens)) {
    translation.select = SelectShape{part(select->list), part(select->table), part(select->name),
                                     part(select->condition), part(select->order)};
  } else if (const auto deletion = ReadDelete(sql, tokens)) {
    translation.deletion =
        DeleteShape{part(deletion->table), part({deletion->where, tokens.size()}), deletion->namesTableTwice};
    if (dialect.NamesTableTwiceInDeletes() && MayNameTableTwice(sql, tokens, *deletion)) {
      constexpr std::string_view kDelete = "delete";
      translation.text.insert(kDelete.size(), " " + translation.deletion->table);
      translation.deletion->namesTableTwice = true;
    }
  }
  if (const auto change = ReadChange(sql, tokens)) {
    translation.change = ChangeShape{change->change, std::string(change->table.In(sql, tokens))};
  }
  if (translation.yieldsRows && dialect.FoldsNames()) translation.names = SelectedNames(sql, tokens);
  return translation;
}

}  // namespace ADODB::engine
