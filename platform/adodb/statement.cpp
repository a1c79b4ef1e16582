#include "platform/adodb/statement.hpp"

#include <cassert>

namespace ADODB {

Statement& Statement::operator+=(const SqlValue& value) {
  // An empty value still has its place: outside a literal it leaves a hole that no engine would accept.
  values_.push_back({text_.size(), value.Text().size()});
  text_ += value.Text();
  return *this;
}

Statement& Statement::operator+=(const SqlFragment& fragment) {
  text_ += fragment.Text();
  return *this;
}

Statement& Statement::operator+=(const Statement& other) {
  const std::size_t start = text_.size();
  values_.reserve(values_.size() + other.values_.size());
  for (const Span& span : other.values_) values_.push_back({start + span.offset, span.length});
  text_ += other.text_;
  return *this;
}

void Statement::CutLast(std::size_t count) {
  assert(count <= text_.size());
  assert(values_.empty() || values_.back().offset + values_.back().length <= text_.size() - count);
  text_.resize(text_.size() - count);
}

}  // namespace ADODB
