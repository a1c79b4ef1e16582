// A value of one of the platform's types, and its conversions.
//
// The conversions raise what the platform raises: 6 Overflow, 13 Type mismatch, 94 Invalid use of Null,
// 91 and 438 for an object. Conversions between text and dates go through the locale of the current Runtime.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/automation/date_time.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace automation {

class Variant;
using VariantArray = std::vector<Variant>;  // lower bound 0

struct ORVANE_EXPORT EmptyValue {
  friend bool operator==(EmptyValue, EmptyValue) = default;
};
struct ORVANE_EXPORT NullValue {
  friend bool operator==(NullValue, NullValue) = default;
};

class ORVANE_EXPORT Variant {
 public:
  using Value = std::variant<EmptyValue, NullValue, bool, std::int16_t, std::int32_t, std::int64_t, double,
                             DateTime, std::string, std::shared_ptr<const VariantArray>, ObjectPtr>;

  Variant() = default;  // Empty
  Variant(NullValue value) : value_(value) {}
  Variant(bool value) : value_(value) {}
  Variant(std::int16_t value) : value_(value) {}
  Variant(std::int32_t value) : value_(value) {}
  Variant(std::int64_t value) : value_(value) {}
  Variant(double value) : value_(value) {}
  Variant(DateTime value) : value_(value) {}
  Variant(std::string value) : value_(std::move(value)) {}
  Variant(std::string_view value) : value_(std::string(value)) {}
  Variant(const char* value) : value_(std::string(value)) {}
  Variant(VariantArray value) : value_(std::make_shared<const VariantArray>(std::move(value))) {}
  Variant(ObjectPtr value) : value_(std::move(value)) {}

  static Variant Null() { return Variant(NullValue{}); }

  // Assigns a text, reusing the memory of a text that it holds.
  void SetText(std::string_view text) {
    if (auto* held = std::get_if<std::string>(&value_)) {
      held->assign(text);
    } else {
      value_.emplace<std::string>(text);
    }
  }

  const Value& Get() const { return value_; }
  bool IsEmpty() const { return std::holds_alternative<EmptyValue>(value_); }
  bool IsNull() const { return std::holds_alternative<NullValue>(value_); }
  bool IsText() const { return std::holds_alternative<std::string>(value_); }
  bool IsDate() const { return std::holds_alternative<DateTime>(value_); }
  bool IsObject() const { return std::holds_alternative<ObjectPtr>(value_); }

  // Same type and same value; arrays item by item, objects by identity.
  friend bool operator==(const Variant& one, const Variant& other);

 private:
  Value value_;
};

// Whole number: fractions round half to even, text is read as a number (13 when it is none), True is -1,
// Empty is 0; outside the type's range is 6.
ORVANE_EXPORT std::int16_t ToInt16(const Variant& value);
ORVANE_EXPORT std::int32_t ToInt32(const Variant& value);
ORVANE_EXPORT std::int64_t ToInt64(const Variant& value);
ORVANE_EXPORT double ToDouble(const Variant& value);

// The words true and false in any case, or a number, non-zero being true; Empty is false.
ORVANE_EXPORT bool ToBoolean(const Variant& value);

// A date as it is, text as the current locale reads it, a number as days since date zero.
ORVANE_EXPORT DateTime ToDateTime(const Variant& value);

// "True"/"False", plain decimal numbers without thousands separators, dates in the current locale's general
// form, Empty as empty text; Null is 94, an array 13, an object 438.
ORVANE_EXPORT std::string ToText(const Variant& value);

// Whether ToDouble would succeed; Null and dates count as not numeric, Empty as numeric.
ORVANE_EXPORT bool IsNumeric(const Variant& value);

// As ToText, but Null gives empty text: the way "value & ''" joins a column into a text.
ORVANE_EXPORT std::string ToTextOrEmpty(const Variant& value);

}  // namespace automation
