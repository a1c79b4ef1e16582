#include "platform/adodb/odbc/parameter.hpp"

#include <algorithm>
#include <utility>

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

template <class Text>
ParameterBuffer::Shape ParameterBuffer::Keep(Text text, Text& kept, SQLSMALLINT cType, SQLSMALLINT sqlType,
                                             SQLSMALLINT longType) {
  indicator_ = static_cast<SQLLEN>(text.size() * sizeof(typename Text::value_type));
  if (text.size() > kept.size()) {
    kept = std::move(text);
  } else {
    std::copy(text.begin(), text.end(), kept.begin());
  }
  if (kept.empty()) kept.resize(1);  // an empty text still needs an address
  return {cType, kept.size() > kLongText ? longType : sqlType, kept.size(), 0, kept.data()};
}

ParameterBuffer::Shape ParameterBuffer::Take(const automation::Variant& value, TextForm form) {
  struct Visitor {
    ParameterBuffer& to;
    TextForm form;

    Shape operator()(automation::EmptyValue) const { return Null(); }
    Shape operator()(automation::NullValue) const { return Null(); }
    Shape operator()(bool v) const {
      to.bit_ = v ? 1 : 0;
      return {SQL_C_BIT, SQL_BIT, 1, 0, &to.bit_};
    }
    Shape operator()(std::int16_t v) const { return (*this)(std::int32_t{v}); }
    Shape operator()(std::int32_t v) const {
      to.integer_ = v;
      return {SQL_C_SLONG, SQL_INTEGER, 10, 0, &to.integer_};
    }
    Shape operator()(std::int64_t v) const {
      to.wideInteger_ = v;
      return {SQL_C_SBIGINT, SQL_BIGINT, 19, 0, &to.wideInteger_};
    }
    Shape operator()(double v) const {
      to.number_ = v;
      return {SQL_C_DOUBLE, SQL_DOUBLE, 15, 0, &to.number_};
    }
    Shape operator()(automation::DateTime v) const {
      to.moment_ = ToTimestamp(v);
      return {SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 26, 6, &to.moment_};
    }
    Shape operator()(const std::string& v) const {
      if (form == TextForm::Utf16) {
        return to.Keep(ToWide(v), to.text_, SQL_C_WCHAR, SQL_WVARCHAR, SQL_WLONGVARCHAR);
      }
      RequireUtf8(v);
      return to.Keep(v, to.bytes_, SQL_C_CHAR, SQL_VARCHAR, SQL_LONGVARCHAR);
    }
    Shape operator()(const std::shared_ptr<const automation::VariantArray>&) const { Refuse(); }
    Shape operator()(const automation::ObjectPtr&) const { Refuse(); }

    // Null has no type of its own: what was bound before serves, so that a column's type stays what it was.
    Shape Null() const {
      const Shape text = to.bound_.memory != nullptr ? to.bound_ : (*this)(std::string());
      to.indicator_ = SQL_NULL_DATA;
      return text;
    }
    [[noreturn]] static void Refuse() { throw automation::Error(automation::ErrorNumber::TypeMismatch); }
  };
  indicator_ = 0;
  return std::visit(Visitor{*this, form}, value.Get());
}

SQLRETURN ParameterBuffer::Bind(SQLHANDLE statement, SQLUSMALLINT number, const automation::Variant& value,
                                TextForm form) {
  const Shape shape = Take(value, form);
  if (shape == bound_) return SQL_SUCCESS;
  const std::size_t room = form == TextForm::Utf8 ? bytes_.size() : text_.size() * sizeof(SQLWCHAR);
  const SQLRETURN status =
      SQLBindParameter(statement, number, SQL_PARAM_INPUT, shape.cType, shape.sqlType, shape.size,
                       shape.digits, shape.memory, static_cast<SQLLEN>(room), &indicator_);
  bound_ = SQL_SUCCEEDED(status) ? shape : Shape{};
  return status;
}

}  // namespace ADODB::odbc
