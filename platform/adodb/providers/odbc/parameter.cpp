#include "platform/adodb/providers/odbc/parameter.hpp"

#include <algorithm>

#include "platform/automation/error.hpp"

namespace ADODB::odbc {
namespace {

// Texts up to this many characters fit the drivers' ordinary text type.
constexpr std::size_t kLongText = 4000;

SQL_TIMESTAMP_STRUCT ToTimestamp(automation::DateTime value) {
  const automation::DateTimeParts parts = value.Parts();
  SQL_TIMESTAMP_STRUCT result{};
  result.year = static_cast<SQLSMALLINT>(parts.year);
  result.month = static_cast<SQLUSMALLINT>(parts.month);
  result.day = static_cast<SQLUSMALLINT>(parts.day);
  result.hour = static_cast<SQLUSMALLINT>(parts.hour);
  result.minute = static_cast<SQLUSMALLINT>(parts.minute);
  result.second = static_cast<SQLUSMALLINT>(parts.second);
  result.fraction = static_cast<SQLUINTEGER>(parts.microsecond) * 1000;  // ODBC counts billionths
  return result;
}

}  // namespace

ParameterBuffer::Shape ParameterBuffer::Take(const automation::Variant& value) {
  struct Visitor {
    ParameterBuffer& to;

    Shape operator()(automation::EmptyValue) const { return Null(); }
    Shape operator()(automation::NullValue) const { return Null(); }
    Shape operator()(bool v) const {
      to.bit_ = v ? 1 : 0;
      to.indicator_ = 0;
      return {SQL_C_BIT, SQL_BIT, 1, 0, &to.bit_};
    }
    Shape operator()(std::int16_t v) const { return (*this)(std::int32_t{v}); }
    Shape operator()(std::int32_t v) const {
      to.integer_ = v;
      to.indicator_ = 0;
      return {SQL_C_SLONG, SQL_INTEGER, 10, 0, &to.integer_};
    }
    Shape operator()(std::int64_t v) const {
      to.wideInteger_ = v;
      to.indicator_ = 0;
      return {SQL_C_SBIGINT, SQL_BIGINT, 19, 0, &to.wideInteger_};
    }
    Shape operator()(double v) const {
      to.number_ = v;
      to.indicator_ = 0;
      return {SQL_C_DOUBLE, SQL_DOUBLE, 15, 0, &to.number_};
    }
    Shape operator()(automation::DateTime v) const {
      to.moment_ = ToTimestamp(v);
      to.indicator_ = 0;
      return {SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 26, 6, &to.moment_};
    }
    Shape operator()(const std::string& v) const {
      WideText wide = ToWide(v);
      to.indicator_ = static_cast<SQLLEN>(wide.size() * sizeof(SQLWCHAR));
      if (wide.size() > to.text_.size()) {
        to.text_ = std::move(wide);
      } else {
        std::copy(wide.begin(), wide.end(), to.text_.begin());
      }
      if (to.text_.empty()) to.text_.resize(1);  // an empty text still needs an address
      const std::size_t room = to.text_.size();
      return {SQL_C_WCHAR, static_cast<SQLSMALLINT>(room > kLongText ? SQL_WLONGVARCHAR : SQL_WVARCHAR), room,
              0, to.text_.data()};
    }
    Shape operator()(const std::shared_ptr<const automation::VariantArray>&) const { Refuse(); }
    Shape operator()(const automation::ObjectPtr&) const { Refuse(); }

    // Null has no type of its own: what was bound before serves, so that a column's type stays what it was.
    Shape Null() const {
      to.indicator_ = SQL_NULL_DATA;
      if (to.bound_.memory != nullptr) return to.bound_;
      if (to.text_.empty()) to.text_.resize(1);
      return {SQL_C_WCHAR, SQL_WVARCHAR, to.text_.size(), 0, to.text_.data()};
    }
    [[noreturn]] static void Refuse() { throw automation::Error(automation::ErrorNumber::TypeMismatch); }
  };
  return std::visit(Visitor{*this}, value.Get());
}

SQLRETURN ParameterBuffer::Bind(SQLHANDLE statement, SQLUSMALLINT number, const automation::Variant& value) {
  const Shape shape = Take(value);
  if (shape == bound_) return SQL_SUCCESS;
  const SQLRETURN status = SQLBindParameter(
      statement, number, SQL_PARAM_INPUT, shape.cType, shape.sqlType, shape.size, shape.digits, shape.memory,
      static_cast<SQLLEN>(text_.size() * sizeof(SQLWCHAR)), &indicator_);
  bound_ = SQL_SUCCEEDED(status) ? shape : Shape{};
  return status;
}

}  // namespace ADODB::odbc
