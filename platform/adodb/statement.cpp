#include "platform/adodb/statement.hpp"

#include <cassert>

namespace ADODB {

void Statement::AddValue(Span value) {
  if (more_.empty() && count_ < few_.size()) {
    few_[count_++] = value;
    return;
  }
  if (more_.empty()) more_.assign(few_.begin(), few_.end());
  more_.push_back(value);
}

Statement& Statement::operator+=(const SqlValue& value) {
  // An empty value still has its place: outside a literal it leaves a hole that no engine would accept.
  AddValue({text_.size(), value.Text().size()});
  text_ += value.Text();
  return *this;
}

Statement& Statement::operator+=(const SqlFragment& fragment) {
  text_ += fragment.Text();
  return *this;
}

Statement& Statement::operator+=(const Statement& other) {
  const std::size_t start = text_.size();
  const std::size_t count = other.Values().size();  // a statement may be added to itself
  for (std::size_t i = 0; i < count; ++i) {
    const Span span = other.Values()[i];
    AddValue({start + span.offset, span.length});
  }
  text_ += other.text_;
  return *this;
}

void Statement::CutLast(std::size_t count) {
  assert(count <= text_.size());
  assert(Values().empty() || Values().back().offset + Values().back().length <= text_.size() - count);
  text_.resize(text_.size() - count);
}

}  // namespace ADODB
