#include "platform/adodb/sql/delete_shape.hpp"

#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {
namespace {

class Reader {
 public:
  explicit Reader(std::string_view sql) : sql_(sql), list_(Tokenize(sql)) {}

  bool Read(DeleteShape& shape) {
    if (!Take("delete")) return false;
    if (!IsAt("from")) {
      if (!TakeName(shape.where)) return false;
      shape.namesTableTwice = true;
    }
    if (!Take("from") || !TakeName(shape.table)) return false;
    if (shape.namesTableTwice && shape.where != shape.table) return false;
    shape.where.clear();
    if (at_ == list_.tokens.size()) return true;
    if (!IsAt("where")) return false;
    shape.where = sql_.substr(list_.tokens[at_].offset);
    return !EndsInAnotherClause();
  }

 private:
  bool IsAt(std::string_view lowerCase) const {
    return at_ < list_.tokens.size() && Is(sql_, list_.tokens[at_], lowerCase);
  }
  bool Take(std::string_view lowerCase) {
    if (!IsAt(lowerCase)) return false;
    ++at_;
    return true;
  }
  bool TakeName(std::string& name) {
    const std::size_t begin = at_;
    do {
      if (at_ == list_.tokens.size()) return false;
      const TokenKind kind = list_.tokens[at_].kind;
      if (kind != TokenKind::Word && kind != TokenKind::QuotedName) return false;
      ++at_;
    } while (Take("."));
    const std::size_t start = list_.tokens[begin].offset;
    name = sql_.substr(start, list_.tokens[at_ - 1].End() - start);
    return true;
  }
  bool EndsInAnotherClause() const {
    std::size_t depth = 0;
    for (std::size_t i = at_; i < list_.tokens.size(); ++i) {
      const Token& token = list_.tokens[i];
      if (Is(sql_, token, "(")) ++depth;
      if (Is(sql_, token, ")") && depth > 0) --depth;
      if (depth > 0) continue;
      for (const std::string_view word : {"order", "limit", "returning", "option"}) {
        if (Is(sql_, token, word)) return true;
      }
    }
    return false;
  }

  std::string_view sql_;
  TokenList list_;
  std::size_t at_ = 0;
};

}  // namespace

bool ReadDelete(std::string_view sql, DeleteShape& shape) {
  shape = {};
  return Reader(sql).Read(shape);
}

}  // namespace ADODB::engine
