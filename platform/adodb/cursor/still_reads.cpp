#include "platform/adodb/cursor/still_reads.hpp"

#include <algorithm>
#include <string_view>
#include <variant>

#include "platform/base/text.hpp"

namespace ADODB::engine {
namespace {

// Bytes that need not be a text are compared as one of their digits.
std::string HexDigits(std::string_view bytes) {
  std::string digits;
  digits.reserve(bytes.size() * 2);
  for (const char c : bytes) base::AppendHex(digits, c);
  return digits;
}

}  // namespace

StillReads::StillReads(const Dialect& dialect, const Column& column)
    : condition(dialect.StillReads(dialect.QuotedName(column.baseColumn), column.type)),
      type(column.type),
      marks(static_cast<std::size_t>(std::count(condition.begin(), condition.end(), '?'))) {}

void StillReads::Bind(const Dialect& dialect, const automation::Variant& value,
                      Parameters& parameters) const {
  const auto* bytes = type == ColumnType::Binary ? std::get_if<std::string>(&value.Get()) : nullptr;
  for (std::size_t i = 0; i < marks; ++i) {
    parameters.push_back(bytes != nullptr ? HexDigits(*bytes) : dialect.ComparedValue(value, type));
  }
}

}  // namespace ADODB::engine
